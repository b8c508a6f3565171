// A page in the browser: what it shows, and hands for it.

import assert from 'node:assert/strict';
import { after } from 'node:test';

import puppeteer from 'puppeteer-core';

const browser = await puppeteer.launch({
  executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
  args: ['--no-sandbox'],
});
after(() => browser.close());

export const WIDE = { width: 1440, height: 900 };
export const NARROW = { width: 390, height: 800, hasTouch: true };

/** Calls `look` until it gives what is wanted; says what it gave at last. */
export async function eventually(look, wanted, what = '') {
  let seen;
  for (const end = Date.now() + 10000; Date.now() < end; await new Promise((resolve) => setTimeout(resolve, 25))) {
    seen = await look();
    try {
      assert.deepEqual(seen, wanted);
      return;
    } catch {
      // not yet
    }
  }
  assert.deepEqual(seen, wanted, what);
}

export class Look {
  static async at(url, { viewport = WIDE, dark = false } = {}) {
    const look = new Look();
    look.errors = [];
    look.page = await browser.newPage();
    look.page.on('console', (line) => look.errors.push(line.text()));
    look.page.on('pageerror', (error) => look.errors.push(error.message));
    look.page.on('requestfailed', (request) => look.errors.push(request.url()));
    await look.page.setViewport(viewport);
    await look.page.emulateMediaFeatures([{ name: 'prefers-color-scheme', value: dark ? 'dark' : 'light' }]);
    await look.page.goto(url);
    return look;
  }

  /** Ends; nothing may have gone wrong. */
  async close() {
    assert.deepEqual(this.errors, []);
    await this.page.close();
  }

  async press(...keys) {
    for (const key of keys) await this.page.keyboard.press(key);
  }

  /** Goes to a pixel by keyboard. */
  async goTo(x, y) {
    await this.press('g');
    await this.page.keyboard.type(`${x},${y}`);
    await this.press('Enter');
  }

  text(selector) {
    return this.page.$eval(selector, (node) => node.textContent);
  }

  texts(selector) {
    return this.page.$$eval(selector, (nodes) => nodes.map((node) => node.textContent));
  }

  /** The pixel that is looked at, and its samples. */
  pixel() {
    return this.page.evaluate(() => {
      const values = ['a', 'b', 'd'].map((side) => document.getElementById(`value-${side}`)?.textContent);
      return [document.getElementById('goto').value, ...values.filter((text) => text !== undefined)];
    });
  }

  /** The samples of every plane of the list: { name: [a, b] }. */
  list() {
    return this.page.$$eval('.row:not([hidden])', (rows) =>
      Object.fromEntries(
        rows.map((row) => [
          row.querySelector('.name').textContent,
          [...row.querySelectorAll('.value')].map((value) => value.textContent),
        ]),
      ),
    );
  }

  labels() {
    return this.texts('.pane:not([hidden]) .label');
  }

  /** What the address says once the view rests: it is written a quarter of a second after the last change. */
  async link() {
    let hash;
    for (let rested = 0; rested < 4; await new Promise((resolve) => setTimeout(resolve, 100))) {
      const frame = () =>
        new Promise((resolve) => {
          requestAnimationFrame(() => resolve(location.hash));
          setTimeout(() => resolve(location.hash), 200); // a page behind another draws nothing
        });
      const now = await this.page.evaluate(frame);
      rested = now && now === hash ? rested + 1 : 0;
      hash = now;
    }
    return Object.fromEntries(new URLSearchParams(hash.slice(1)));
  }

  /** Middle of a pixel in a pane, on the screen. */
  async placeOf(x, y, pane = 0) {
    const [left, top, zoom] = (await this.link()).view.split(',').map(Number);
    const box = await (await this.page.$(`[data-pane="${pane}"]`)).boundingBox();
    return [box.x + box.width / 2 + (x + 0.5 - left) * zoom, box.y + box.height / 2 + (y + 0.5 - top) * zoom];
  }

  /** Colours of the pane under places of the screen. */
  async coloursAt(places) {
    return this.page.evaluate(
      (all) =>
        all.map(([left, top]) => {
          const canvas = document.elementsFromPoint(left, top).find((node) => node.matches('.pane > canvas'));
          const box = canvas.getBoundingClientRect();
          const copy = new OffscreenCanvas(1, 1).getContext('2d');
          copy.drawImage(canvas, -Math.floor(left - box.x), -Math.floor(top - box.y));
          return [...copy.getImageData(0, 0, 1, 1).data].slice(0, 3);
        }),
      places,
    );
  }

  async colourAt(x, y) {
    return (await this.coloursAt([[x, y]]))[0];
  }

  /** Place of the middle of the panes. */
  async placeOfMiddle() {
    const box = await (await this.page.$('#panes')).boundingBox();
    return [box.x + box.width / 2, box.y + box.height / 2];
  }

  /** Frames a second while the wheel zooms in and out and the view moves. */
  async frameRate() {
    const [x, y] = await this.placeOfMiddle();
    return this.page.evaluate(
      async (clientX, clientY) => {
        const pane = document.querySelector('.pane');
        const start = performance.now();
        for (let i = 0; i < 120; ++i) {
          await new Promise(requestAnimationFrame);
          const where = { bubbles: true, cancelable: true, clientX: clientX + i, clientY };
          pane.dispatchEvent(new WheelEvent('wheel', { ...where, deltaY: i < 60 ? -60 : 60 }));
        }
        return 120000 / (performance.now() - start);
      },
      x,
      y,
    );
  }
}
