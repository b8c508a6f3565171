// One pane: a plane through the view that all panes share.

import { colourOf, lookOf, painted, sampleText, sideName } from './colour.js';
import { element, setText } from './dom.js';
import { factorOf, lastLevel, levelSize, samplesNow, TILE, tileNow } from './source.js';
import { changed, hasSide, inside, pixel, run, sideOf, two, view } from './state.js';

export const GRID_ZOOM = 24;
const MOST_PAINTED = 400; // tiles kept, 256 KB each
const PAINT_MS = 10; // of a frame

const paintedTiles = new Map();
let paintUntil = 0;

/** The painted tile, or null until its samples are here and a frame has time for it. */
function paintedNow(plane, side, level, column, row) {
  const key = `${plane.index}${side}${level}/${column}/${row}`;
  const look = lookOf(plane, side);
  const found = paintedTiles.get(key);
  if (found?.look === look) return found.canvas;
  const tile = tileNow(plane, side, level, column, row);
  const late = performance.now() > paintUntil;
  if (tile && late) changed(); // the next frame goes on
  if (!tile || late) return found?.canvas ?? null;
  const canvas = painted(plane, side, tile);
  paintedTiles.delete(key);
  paintedTiles.set(key, { look, canvas });
  if (paintedTiles.size > MOST_PAINTED) paintedTiles.delete(paintedTiles.keys().next().value);
  return canvas;
}

/** The level whose cells are the size of a pixel of the screen: not less for differences, so that none is lost. */
export function levelFor(plane, side, scale) {
  const last = lastLevel(plane);
  let level = 0;
  while (level < last && factorOf(level) * scale < (side === 'd' ? 1 : 0.5)) ++level;
  return level;
}

/** First and last tile of a level that the view shows, along both axes: [left, top, right, bottom]. */
export function tilesInView(plane, level, [left, top, right, bottom]) {
  const span = factorOf(level) * TILE;
  const last = levelSize(plane, level).map((length) => Math.ceil(length / TILE) - 1);
  return [
    Math.max(0, Math.floor(left / span)),
    Math.max(0, Math.floor(top / span)),
    Math.min(last[0], Math.floor(right / span)),
    Math.min(last[1], Math.floor(bottom / span)),
  ];
}

export class Pane {
  constructor(index) {
    this.index = index;
    this.canvas = element('canvas');
    this.label = element('div', { className: 'label' });
    this.node = element('div', { className: 'pane', data: { pane: index } }, this.canvas, this.label);
  }

  get plane() {
    return run.planes[view.panes[this.index].plane];
  }

  get mode() {
    return view.panes[this.index].mode;
  }

  get box() {
    return [this.node.clientWidth, this.node.clientHeight];
  }

  /** The pixel of the plane at a place in the pane, with its fraction. */
  at(x, y) {
    const [width, height] = this.box;
    return [view.x + (x - width / 2) / view.zoom, view.y + (y - height / 2) / view.zoom];
  }

  /** What is in view: [left, top, right, bottom]. */
  get bounds() {
    return [...this.at(0, 0), ...this.at(...this.box)];
  }

  draw() {
    const ratio = globalThis.devicePixelRatio;
    const [width, height] = this.box.map((length) => Math.round(length * ratio));
    if (this.canvas.width !== width) this.canvas.width = width;
    if (this.canvas.height !== height) this.canvas.height = height;
    paintUntil = performance.now() + PAINT_MS;
    const side = sideOf(this.mode);
    this.scale = view.zoom * ratio;
    const context = (this.context ??= this.canvas.getContext('2d', { alpha: false }));
    context.fillStyle = getComputedStyle(this.node).backgroundColor;
    context.fillRect(0, 0, width, height);
    if (this.mode === 'slide') {
      const middle = Math.round(width * view.slider);
      this.drawSide('a', 0, middle);
      this.drawSide('b', middle, width);
      context.fillStyle = '#fff';
      context.fillRect(middle - 1, 0, 2, height);
    } else this.drawSide(side, 0, width);
    this.drawSpot();
    this.describe(side);
  }

  /** Draws a side between two columns of the canvas. */
  drawSide(side, from, to) {
    if (!hasSide(this.plane, side)) return;
    const { context, plane } = this;
    context.save();
    context.beginPath();
    context.rect(from, 0, to - from, this.canvas.height);
    context.clip();
    const level = levelFor(plane, side, this.scale);
    const last = lastLevel(plane);
    if (level !== last) this.drawLevel(side, last); // until the finer one is here
    this.drawLevel(side, level);
    if (view.zoom >= GRID_ZOOM && level === 0) this.drawPixels(side);
    context.restore();
  }

  /** A coordinate of the plane as one of the canvas, on a whole pixel. */
  place(value, axis) {
    const middle = [view.x, view.y][axis];
    const length = [this.canvas.width, this.canvas.height][axis];
    return Math.round((value - middle) * this.scale + length / 2);
  }

  drawLevel(side, level) {
    const { context, plane, bounds } = this;
    const factor = factorOf(level);
    const [left, top, right, bottom] = tilesInView(plane, level, bounds);
    context.imageSmoothingEnabled = this.scale * factor < 1;
    for (let row = top; row <= bottom; ++row)
      for (let column = left; column <= right; ++column) {
        const tile = paintedNow(plane, side, level, column, row);
        if (tile) this.drawTile(tile, column * TILE, row * TILE, factor);
      }
  }

  /** Draws the part of a tile that is in view, its corner at these cells of the level. */
  drawTile(tile, x, y, factor) {
    const [left, top, right, bottom] = this.bounds.map((n) => n / factor);
    const x0 = Math.max(0, Math.floor(left - x));
    const y0 = Math.max(0, Math.floor(top - y));
    const x1 = Math.min(tile.width, Math.ceil(right - x));
    const y1 = Math.min(tile.height, Math.ceil(bottom - y));
    if (x1 <= x0 || y1 <= y0) return;
    const [x2, y2] = [this.place((x + x0) * factor, 0), this.place((y + y0) * factor, 1)];
    const [x3, y3] = [this.place((x + x1) * factor, 0), this.place((y + y1) * factor, 1)];
    this.context.drawImage(tile, x0, y0, x1 - x0, y1 - y0, x2, y2, x3 - x2, y3 - y2);
  }

  /** Grid, values, and a frame around what differs. */
  drawPixels(side) {
    const { context, plane, bounds } = this;
    const [left, top] = [Math.max(0, Math.floor(bounds[0])), Math.max(0, Math.floor(bounds[1]))];
    const right = Math.min(plane.size[0], Math.ceil(bounds[2]));
    const bottom = Math.min(plane.size[1], Math.ceil(bounds[3]));
    context.fillStyle = 'rgb(128 128 128 / 45%)';
    const [x0, y0, x1, y1] = [this.place(left, 0), this.place(top, 1), this.place(right, 0), this.place(bottom, 1)];
    for (let x = left; x <= right; ++x) context.fillRect(this.place(x, 0), y0, 1, y1 - y0);
    for (let y = top; y <= bottom; ++y) context.fillRect(x0, this.place(y, 1), x1 - x0, 1);
    const colour = colourOf(plane, side);
    const marked = side !== 'd' && plane.comparable && !plane.equal;
    for (let y = top; y < bottom; ++y)
      for (let x = left; x < right; ++x) {
        const values = samplesNow(plane, side, [x, y]);
        if (!values) continue;
        if (view.labels) this.drawValues(values, side, x, y, colour(values));
        if (marked && samplesNow(plane, 'd', [x, y])?.some(Boolean)) this.frame(x, y, '#ff5a36', 2);
      }
  }

  drawValues(values, side, x, y, [r, g, b]) {
    const { context, scale } = this;
    const lines = values.map((v) => sampleText({}, [v], side === 'd'));
    const longest = Math.max(...lines.map((line) => line.length), 3);
    const size = Math.min(scale / (0.64 * longest), scale / (1.2 * lines.length), 15 * globalThis.devicePixelRatio);
    context.font = `${size}px ui-monospace, monospace`;
    context.textAlign = 'center';
    context.textBaseline = 'middle';
    context.fillStyle = 0.3 * r + 0.6 * g + 0.1 * b > 110 ? '#000' : '#fff';
    const [middle, centre] = [this.place(x + 0.5, 0), this.place(y + 0.5, 1)];
    lines.forEach((line, i) => context.fillText(line, middle, centre + (i - (lines.length - 1) / 2) * size * 1.15));
  }

  frame(x, y, colour, width, around = 0) {
    const { context } = this;
    const [x0, y0] = [this.place(x - around, 0), this.place(y - around, 1)];
    context.strokeStyle = colour;
    context.lineWidth = width * globalThis.devicePixelRatio;
    context.strokeRect(x0, y0, this.place(x + 1 + around, 0) - x0, this.place(y + 1 + around, 1) - y0);
  }

  /** The pixel that is looked at. */
  drawSpot() {
    const [x, y] = pixel();
    if (!inside(this.plane, [x, y])) return;
    const around = Math.max(0, 6 - this.scale / 2) / this.scale; // wide enough to be seen
    this.frame(x, y, '#000', 4, around);
    this.frame(x, y, '#fff', 2, around);
  }

  describe(side) {
    const shown = this.mode === 'slide' ? 'slider' : two ? sideName(side) : '';
    const missing = hasSide(this.plane, side) ? '' : ` — not in ${two ? 'both' : 'this run'}`;
    setText(this.label, `${this.plane.name}${shown ? ` · ${shown}` : ''}${missing}`);
    this.label.hidden = !view.labels;
    this.node.classList.toggle('active', view.panes.length > 1 && view.active === this.index);
  }
}
