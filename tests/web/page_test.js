// The page in the browser, through each of its doors: one file, a folder of tiles, the server.

import assert from 'node:assert/strict';
import { join } from 'node:path';
import { before, describe, it } from 'node:test';

import { eventually, Look, NARROW } from './browser.js';
import { call, changedPlanes, makePlanes, putRun, room, samplesAt, serve } from './runs.js';

const CHANGES = [
  ['planes/GH_hp.npy', 417, 263, 0, 1],
  ['out.ppm', 3, 2, 1, 7],
  ['out.ppm', 590, 2, 0, -2],
  ['out.ppm', 20, 410, 2, 1],
];
const NAMES = { 'raw.ppm': 'raw', 'planes/AvgRGB.npy': 'AvgRGB', 'planes/GH_hp.npy': 'GH_hp', 'out.ppm': 'out' };
const CODES = ['0 blend', '1 horizontal', '2 vertical'];
const shown = (values) => values.join(' ').replaceAll('-', '−');

/** What the list has to show at a pixel. */
function listAt(runs, x, y) {
  const texts = (name, text) => runs.map((planes) => text(samplesAt(planes[name], x, y)));
  const list = Object.fromEntries(Object.entries(NAMES).map(([file, name]) => [name, texts(file, shown)]));
  return { ...list, DirInfo: texts('dbg_img_DirInfo.ppm', ([code]) => CODES[code]) };
}

const doors = {};
before(async () => {
  for (const [name, width, height] of [
    ['small', 600, 500],
    ['large', 2300, 1100], // too many samples for one file
  ]) {
    const a = makePlanes(width, height);
    const b = changedPlanes(a, CHANGES);
    putRun(`${name} a`, a, 'reg_cfa_edge_tol = 300');
    putRun(`${name} b`, b, '');
    call('cfatool', 'report', `${name} a`, `${name} b`, '-o', `${name} page`);
    doors[name] = { url: `file://${join(room, `${name} page`)}/index.html`, a, b };
  }
  doors.served = { ...doors.large, ...(await serve('large a', 'large b')) };
});

for (const door of ['small', 'large', 'served'])
  describe(`two runs, ${door}`, () => {
    it('opens on the stage that is wrong, and shows every sample of both there and elsewhere', async () => {
      const { url, a, b } = doors[door];
      const look = await Look.at(url);
      const [at] = samplesAt(a['planes/GH_hp.npy'], 417, 263);
      await eventually(() => look.pixel(), ['417,263', shown([at]), shown([at + 1]), '−1']);
      await eventually(() => look.list(), listAt([a, b], 417, 263));
      assert.deepEqual(await look.texts('.verdict.differs_here'), ['differs here']);
      assert.deepEqual(await look.texts('.verdict.differs_by_its_input'), ['by its input']); // a copy of what differs
      assert.match(await look.text('#headline'), /cfa_CalPredictPixel differs: GH_hp at 417,263/);
      assert.match(await look.text('#site'), /^Gb site/);
      assert.equal(await look.text('[data-do=registers]'), '1 register differs');
      const { width, height } = a['raw.ppm'];
      for (const [x, y] of [
        [0, 0],
        [1, 0], // behind a number of 32 bits
        [width - 1, height - 1],
        [255, 256],
      ]) {
        await look.goTo(x, y);
        await eventually(() => look.list(), listAt([a, b], x, y));
      }
      await look.close();
    });

    it('draws each sample where it is, and a single difference however small the picture', async () => {
      const { url, a } = doors[door];
      const look = await Look.at(url);
      await eventually(() => look.labels(), ['GH_hp · ' + doors.name(door, 'a'), 'GH_hp · ' + doors.name(door, 'b')]);
      await look.press('2', 'd', 'f');
      const [x, y] = await look.placeOf(417, 263);
      const around = [-2, -1, 0, 1, 2].flatMap((dy) => [-2, -1, 0, 1, 2].map((dx) => [x + dx, y + dy]));
      const seen = async () => (await look.coloursAt(around)).some(([, , blue]) => blue > 150);
      await look.press('l');
      await look.goTo(0, 0);
      await eventually(seen, true, 'the first run is smaller: blue');
      await eventually(() => look.colourAt(x + 40, y - 40), [118, 118, 118]);
      await look.press('k', 'k', 'a'); // raw, as it is
      for (const zoom of ['one', 'zoom-in', 'zoom-in', 'zoom-in', 'zoom-in', 'zoom-in']) {
        await look.page.click(`[data-do=${zoom}]`);
        await look.goTo(290, 190);
        const grey = Math.round((255 * samplesAt(a['raw.ppm'], 301, 203)[0]) / 4095);
        const drawn = async () => look.colourAt(...(await look.placeOf(301, 203)));
        await eventually(drawn, [grey, grey, grey], zoom);
      }
      await look.close();
    });

    it('steps through the differences, lists only planes with some, blinks, slides, and keeps it all in a link', async () => {
      const { url } = doors[door];
      const [a, b] = ['a', 'b'].map((side) => doors.name(door, side));
      const look = await Look.at(url);
      await eventually(async () => (await look.pixel())[0], '417,263');
      const at = (place) => eventually(async () => (await look.pixel())[0], place);
      await look.link(); // the place to come back to
      await look.press('2', 'N');
      await at('3,2');
      for (const [key, place] of [
        ['n', '590,2'],
        ['n', '20,410'],
        ['p', '590,2'],
        ['Home', '3,2'],
      ]) {
        await look.press(key);
        await at(place);
      }
      await look.press('p');
      await eventually(() => look.text('#said'), 'No difference before.');
      await look.press('o');
      await eventually(async () => Object.keys(await look.list()).sort(), ['GH_hp', 'out']);
      await look.press('Space');
      for (const side of [a, b, a]) await eventually(() => look.labels(), [`out · ${side}`]);
      await look.press('s', '.', '.', 'ArrowDown', 'l', 'h', 't');
      await eventually(async () => (await look.link()).slider, '0.6');
      const link = await look.page.evaluate(() => location.href);
      const other = await Look.at(link);
      await eventually(() => other.labels(), ['out · slider']);
      await eventually(() => other.link(), await look.link());
      assert.equal((await other.pixel())[0], '3,3');
      assert.deepEqual(Object.keys(await other.list()).sort(), ['GH_hp', 'out']);
      const switches = () =>
        other.page.evaluate(() => [
          document.documentElement.style.colorScheme,
          document.getElementById('only').checked,
          ...['#histogram', '.label'].map((name) => document.querySelector(name).hidden),
        ]);
      assert.deepEqual(await switches(), ['dark', true, true, true]);
      await other.press('o', 'l', 'h', 't', 't', 'f');
      await eventually(async () => (await other.link()).fitted, '1');
      assert.deepEqual(await switches(), ['', false, false, false]);
      await other.close();
      await look.page.goBack();
      await eventually(() => look.labels(), [`GH_hp · ${a}`, `GH_hp · ${b}`]);
      await look.page.goForward();
      await eventually(() => look.labels(), ['out · slider']);
      assert.equal((await look.link()).theme, 'dark');
      await look.close();
    });
  });
doors.name = (door, side) => `${door === 'small' ? 'small' : 'large'} ${side}`;

describe('hands', () => {
  let look;
  const view = async () => (await look.link()).view.split(',').map(Number);
  it('points, zooms where the pointer is, drags, and clicks', async () => {
    look = await Look.at(doors.small.url);
    await eventually(async () => (await look.pixel())[0], '417,263');
    await look.press('2', 'f');
    const place = await look.placeOf(100, 50);
    await look.page.mouse.move(...place);
    await eventually(async () => (await look.pixel())[0], '100,50');
    const at = await view();
    await look.page.mouse.wheel({ deltaY: -500 });
    assert.ok((await view())[2] > 2 * at[2]);
    const same = await look.placeOf(100, 50);
    assert.ok(Math.hypot(same[0] - place[0], same[1] - place[1]) < 3, 'zooms around the pointer');
    const [left, top, zoom] = await view();
    await look.page.mouse.down();
    await look.page.mouse.move(place[0] - 60, place[1] - 30, { steps: 3 });
    await look.page.mouse.up();
    const now = await view();
    assert.ok(Math.abs(now[0] - left - 60 / zoom) < 1 && Math.abs(now[1] - top - 30 / zoom) < 1, `${now}`);
    await look.page.mouse.click(...(await look.placeOf(120, 60)));
    await look.page.mouse.move(20, 300); // away from the panes
    await eventually(async () => (await look.pixel())[0], '120,60');
    await look.close();
  });

  it('chooses planes, panes and ranges by keys alone', async () => {
    look = await Look.at(doors.small.url);
    await eventually(async () => (await look.pixel())[0], '417,263');
    await look.press('4');
    await eventually(
      () => look.labels(),
      ['small a', 'small b', 'small a − small b', 'slider'].map((side) => `GH_hp · ${side}`),
    );
    await look.press('j', '2', '2');
    await eventually(() => look.labels(), ['DirInfo · small a']);
    await eventually(() => look.texts('#legend > span'), CODES);
    await look.press(']');
    await eventually(() => look.labels(), ['out · small a']);
    await look.press('[', '[', '[');
    await eventually(() => look.labels(), ['AvgRGB · small a']);
    await look.press('f', 'r');
    const range = () => look.page.$$eval('.range input', (fields) => fields.map((field) => field.value));
    await eventually(range, ['0', `${499 + 600}`, '1']);
    await look.page.focus('#gamma');
    await look.page.$eval('#gamma', (field) => field.select());
    await look.page.keyboard.type('2');
    await look.press('Tab', 'Escape');
    await eventually(async () => (await look.link()).range, 'AvgRGB,0,1099,2');
    const [, , bright] = await look.colourAt(...(await look.placeOf(10, 100)));
    assert.equal(bright, Math.round(255 * Math.sqrt(700 / 1099)));
    await look.page.$eval('#gamma', (field) => field.blur());
    await look.press('R');
    await eventually(async () => (await look.link()).range, undefined);
    await look.press('?');
    assert.ok((await look.text('#help-dialog')).includes('previous plane that differs'));
    await look.press('n'); // no key acts behind the help
    await look.page.click('#help-dialog button');
    assert.equal((await look.pixel())[0], '417,263');
    assert.equal(await look.page.$('dialog[open]'), null);
    await look.press('i');
    assert.deepEqual((await look.texts('#registers .wrong td')).slice(0, 4), ['reg_cfa_edge_tol', '256', '300', '256']);
    await look.close();
  });

  it('fits a window of 390 pixels, pinched; is dark where the system is, or as asked', async () => {
    look = await Look.at(doors.small.url, { viewport: NARROW, dark: true });
    await eventually(async () => (await look.pixel())[0], '417,263');
    assert.equal(await look.page.evaluate(() => document.documentElement.scrollWidth), 390);
    await eventually(() => look.labels(), ['GH_hp · small a − small b']);
    const [, , zoom] = await view();
    const client = await look.page.createCDPSession();
    const touch = (type, ...points) =>
      client.send('Input.dispatchTouchEvent', { type, touchPoints: points.map(([x, y], id) => ({ x, y, id })) });
    const box = await (await look.page.$('#panes')).boundingBox();
    const middle = [box.x + box.width / 2, box.y + box.height / 2];
    const apart = (by) => [
      [middle[0] - by, middle[1]],
      [middle[0] + by, middle[1]],
    ];
    await touch('touchStart', ...apart(30));
    for (const by of [50, 70, 90]) await touch('touchMove', ...apart(by));
    await touch('touchEnd');
    assert.ok(Math.abs((await view())[2] / zoom - 3) < 0.5, 'three times as far apart');
    const light = () =>
      look.page.evaluate(() => Number(getComputedStyle(document.body.parentNode).backgroundColor.match(/\d+/)[0]));
    assert.ok((await light()) < 60);
    await look.press('t', 't');
    await eventually(async () => (await light()) > 200, true);
    await look.close();
  });
});

it('one run opens on its output, whole, and compares nothing', async () => {
  call('cfatool', 'report', 'small a', '-o', 'one.html');
  const look = await Look.at(`file://${join(room, 'one.html')}`);
  await eventually(() => look.list(), listAt([doors.small.a], 300, 250));
  await eventually(() => look.labels(), ['out']);
  assert.equal(await look.text('[data-do=registers]'), '2 registers away from reset');
  await look.press('d', 'n', 'Space');
  await eventually(() => look.labels(), ['out']);
  assert.equal(await look.page.$('[data-do=blink]'), null);
  await look.close();
});
