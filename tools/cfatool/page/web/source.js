// Where samples come from. tile() is the one door to them; behind it are scripts beside the page, texts in the page,
// or the server that sent it.

import { unpack } from './codec.js';
import { changed, run } from './state.js';

export const TILE = 256;
const CACHE_BYTES = 256 << 20;

/** Samples a cell of a level along each side: 1, 4, 8, 16 ... */
export const factorOf = (level) => (level === 0 ? 1 : 2 ** (level + 1));

export const levelSize = (plane, level) => plane.size.map((length) => Math.ceil(length / factorOf(level)));

/** The first level that fits one tile. */
export function lastLevel(plane) {
  let level = 0;
  while (Math.max(...levelSize(plane, level)) > TILE) ++level;
  return level;
}

// Scripts: each calls cfaTile with its key and its bytes as text.
const waiting = new Map();
globalThis.cfaTile = (key, text) => {
  waiting.get(key)?.(text);
  waiting.delete(key);
};

function bytesOfText(text) {
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < bytes.length; ++i) bytes[i] = text.charCodeAt(i); // the low bits of the character
  return bytes;
}

function fromScript(key) {
  return new Promise((resolve, reject) => {
    const script = document.createElement('script');
    waiting.set(key, (text) => resolve(bytesOfText(text)));
    script.charset = 'x-user-defined'; // a character a byte
    script.src = `tiles/${key}.js`;
    script.onload = () => script.remove();
    script.onerror = () => reject(new Error(`tiles/${key}.js cannot be read`));
    document.head.append(script);
  });
}

let texts;
async function fromPage(key) {
  texts ??= JSON.parse(document.getElementById('tiles').textContent);
  return bytesOfText(atob(texts[key]));
}

async function fromServer(path) {
  const answer = await fetch(path);
  if (!answer.ok) throw new Error(`${path}: ${await answer.text()}`);
  return answer;
}

const bytesOf = {
  scripts: fromScript,
  page: fromPage,
  served: async (key) => new Uint8Array(await (await fromServer(`tile/${key}`)).arrayBuffer()),
}[run.source];

async function load(plane, side, level, column, row) {
  if (plane.equal && side === 'b') return tile(plane, 'a', level, column, row);
  const [width, height] = levelSize(plane, level).map((n, i) => Math.min(TILE, n - [column, row][i] * TILE));
  const count = plane.channels * (level === 0 ? 1 : 2);
  const zeros = () => new Int32Array(width * height);
  if (side === 'd' && plane.equal) return { width, height, planes: Array.from({ length: count }, zeros) };
  if (side === 'd' && level === 0) {
    const [a, b] = await Promise.all(['a', 'b'].map((s) => tile(plane, s, 0, column, row)));
    return { width, height, planes: a.planes.map((of, c) => of.map((sample, i) => sample - b.planes[c][i])) };
  }
  const bytes = await bytesOf([plane.index, side, level, column, row].join('-'));
  return { width, height, planes: unpack(bytes, width, height, count) };
}

const cache = new Map(); // in the order of use
let held = 0;
export const trouble = { text: '' };

function fail(error) {
  trouble.text = error.message;
  changed();
}

function keep(key, entry) {
  if (cache.get(key) !== entry) return; // forgotten on its way
  entry.bytes = 4 * entry.tile.width * entry.tile.height * entry.tile.planes.length;
  held += entry.bytes;
  for (const [oldest, { bytes }] of cache) {
    if (held <= CACHE_BYTES || oldest === key) break;
    held -= bytes;
    cache.delete(oldest);
  }
}

function entryOf(plane, side, level, column, row) {
  const key = `${plane.index}${side}${level}/${column}/${row}`;
  let entry = cache.get(key);
  if (entry) cache.delete(key);
  entry ??= { bytes: 0 };
  cache.set(key, entry);
  if (entry.promise) return entry;
  entry.promise = load(plane, side, level, column, row);
  entry.promise.then((got) => {
    entry.tile = got;
    keep(key, entry);
    changed();
  }, fail);
  return entry;
}

/** Samples of a tile, promised: { width, height, planes }. Planes are channels; from level 1 on the least and the
 * largest of each. Sides are a, b and d, a minus b. */
export function tile(plane, side, level, column, row) {
  return entryOf(plane, side, level, column, row).promise;
}

/** The tile if it is there; if not, it is asked for, and the page is told when it has come. */
export function tileNow(plane, side, level, column, row) {
  return entryOf(plane, side, level, column, row).tile;
}

/** The samples of one pixel, undefined while they are on their way. */
export function samplesNow(plane, side, [x, y]) {
  const got = tileNow(plane, side, 0, x >> 8, y >> 8);
  return got?.planes.map((of) => of[(y % TILE) * got.width + (x % TILE)]);
}

/** Least, largest and histogram of a side of a plane; undefined while they are on their way. */
export function summaryNow(plane, side) {
  const ready = run.summaries?.[plane.index]?.[plane.equal && side === 'b' ? 'a' : side];
  if (ready || run.source !== 'served') return ready;
  if (!(side in plane.summaries)) {
    plane.summaries[side] = undefined;
    fromServer(`summary/${plane.index}-${side}`)
      .then((answer) => answer.json())
      .then((summary) => {
        plane.summaries[side] = summary;
        changed();
      })
      .catch(fail);
  }
  return plane.summaries[side];
}

/** What differs where, as soon as that is known. */
export async function whenCompared() {
  let verdict = run.verdict;
  while (!verdict && run.source === 'served') {
    verdict = await (await fromServer('verdict')).json();
    if (!verdict) await new Promise((resolve) => setTimeout(resolve, 200));
  }
  return verdict;
}
