// From samples to colours: ranges, differences, codes.

import { run, two, view } from './state.js';
import { summaryNow } from './source.js';

const STEPS = 4096; // of the table from samples to levels
export const GREY = [118, 118, 118];
export const ABOVE = [255, 176, 32];
export const BELOW = [64, 150, 255];
export const CODE_COLOURS = [
  [112, 112, 112],
  [240, 144, 24],
  [40, 120, 240],
  [255, 0, 255],
];

const rangeKey = (plane, side) => plane.id + (side === 'd' ? ' difference' : '');

/** The range when nobody has chosen one: the outputs whole, other planes from least to largest of both sides. */
function ownRange(plane, side) {
  if (side === 'd') {
    const found = summaryNow(plane, 'd');
    const largest = found ? Math.max(1, -found.least, found.most) : 1;
    return { low: -largest, high: largest, gamma: 1 };
  }
  if (plane.whole) return { low: plane.range[0], high: plane.range[1], gamma: 1 };
  const found = ['a', 'b'].filter((s, i) => plane.has[i]).map((s) => summaryNow(plane, s));
  if (!found.every(Boolean)) return { low: plane.range[0], high: plane.range[1], gamma: 1 };
  let low = Math.min(...found.map((s) => s.least));
  let high = Math.max(...found.map((s) => s.most), low + 1);
  if (low < 0) [low, high] = [-Math.max(-low, high), Math.max(-low, high)]; // zero is mid-grey
  return { low: Math.min(low, 0), high, gamma: 1 };
}

export const rangeOf = (plane, side) => view.ranges[rangeKey(plane, side)] ?? ownRange(plane, side);

export function setRange(plane, side, range) {
  if (range) view.ranges[rangeKey(plane, side)] = range;
  else delete view.ranges[rangeKey(plane, side)];
}

/** 0..255 for a place in the range, 0..1. A signed range bends on both sides of its middle. */
function level(place, range) {
  const t = Math.min(Math.max(place, 0), 1);
  const signed = range.low < 0 && range.low === -range.high;
  const bent = signed
    ? 0.5 + (Math.sign(t - 0.5) * Math.abs(2 * t - 1) ** (1 / range.gamma)) / 2
    : t ** (1 / range.gamma);
  return Math.round(255 * bent);
}

/** The colour of a difference; one step is far enough from mid-grey to be seen. */
export function differenceColour(value, range) {
  if (value === 0) return GREY;
  const limit = Math.max(1, range.high);
  const amount = Math.min(1, 0.4 + (0.6 * Math.log1p(Math.abs(value))) / Math.log1p(limit)) ** (1 / range.gamma);
  return (value > 0 ? ABOVE : BELOW).map((end, i) => Math.round(GREY[i] + (end - GREY[i]) * amount));
}

const strongest = (values) => values.reduce((m, v) => (Math.abs(v) > Math.abs(m) ? v : m), 0);

/** A function from the samples of one pixel to its colour. */
export function colourOf(plane, side) {
  const range = rangeOf(plane, side);
  if (side === 'd') return (values) => differenceColour(strongest(values), range);
  if (plane.codes) return ([code]) => CODE_COLOURS[code] ?? CODE_COLOURS[3];
  const grey = (value) => level((value - range.low) / (range.high - range.low), range);
  return (values) => (values.length === 3 ? values.map(grey) : Array(3).fill(grey(values[0])));
}

/** Words that change when a painted tile must be painted again. */
export function lookOf(plane, side) {
  const { low, high, gamma } = rangeOf(plane, side);
  return `${low}/${high}/${gamma}`;
}

const packed = ([r, g, b]) => ((255 << 24) | (b << 16) | (g << 8) | r) >>> 0;

/** Largest difference of all channels and extremes, by amount. */
function paintDifference(planes, range, out) {
  const table = new Map();
  for (let i = 0; i < out.length; ++i) {
    let most = 0;
    for (const of of planes) if (Math.abs(of[i]) > Math.abs(most)) most = of[i];
    let colour = table.get(most);
    if (colour === undefined) table.set(most, (colour = packed(differenceColour(most, range))));
    out[i] = colour;
  }
}

function paintCodes(planes, out) {
  const [least, most] = [planes[0], planes[planes.length - 1]];
  const of = (code) => CODE_COLOURS[code] ?? CODE_COLOURS[3];
  for (let i = 0; i < out.length; ++i) out[i] = packed(of(least[i]).map((c, k) => (c + of(most[i])[k]) >> 1));
}

function paintLevels(planes, channels, range, out) {
  const table = Uint8Array.from({ length: STEPS + 1 }, (_, i) => level(i / STEPS, range));
  const scale = STEPS / (range.high - range.low);
  const extremes = planes.length / channels;
  const grey = (c, i) => {
    const value = extremes === 1 ? planes[c][i] : (planes[2 * c][i] + planes[2 * c + 1][i]) / 2;
    return table[Math.min(Math.max(Math.round((value - range.low) * scale), 0), STEPS)];
  };
  for (let i = 0; i < out.length; ++i) {
    const first = grey(0, i);
    out[i] = channels === 3 ? packed([first, grey(1, i), grey(2, i)]) : (255 << 24) | (first * 0x10101);
  }
}

/** A canvas with the colours of a tile. */
export function painted(plane, side, tile) {
  const canvas = document.createElement('canvas');
  [canvas.width, canvas.height] = [tile.width, tile.height];
  const context = canvas.getContext('2d');
  const image = context.createImageData(tile.width, tile.height);
  const out = new Uint32Array(image.data.buffer);
  const range = rangeOf(plane, side);
  if (side === 'd') paintDifference(tile.planes, range, out);
  else if (plane.codes) paintCodes(tile.planes, out);
  else paintLevels(tile.planes, plane.channels, range, out);
  context.putImageData(image, 0, 0);
  return canvas;
}

/** What a sample is called: a code's word, or its number. */
export function sampleText(plane, values, signed = false) {
  if (!values) return '…';
  if (plane.codes && !signed) return `${values[0]} ${plane.codes[values[0]] ?? ''}`.trim();
  return values.map((v) => (signed && v > 0 ? `+${v}` : `${v}`.replace('-', '−'))).join(' ');
}

/** Name of the colour that a site of the mosaic sees. */
export const siteOf = ([x, y]) => (run.sites ? run.sites[(y & 3) * 4 + (x & 3)] : '');
export const sideName = (side) =>
  side === 'd' ? `${run.sides[0].name} − ${run.sides[1].name}` : run.sides[two && side === 'b' ? 1 : 0].name;
