// Below the list: the pixel, the range of the plane, its histogram, the words of its codes.

import { ABOVE, BELOW, CODE_COLOURS, GREY, rangeOf, sampleText, setRange, siteOf } from './colour.js';
import { byId, element, setText } from './dom.js';
import { lookAt, paneAt } from './panes.js';
import { levelFor, tilesInView } from './pane.js';
import { factorOf, samplesNow, summaryNow, TILE, tileNow, trouble } from './source.js';
import { activePane, activePlane, changed, hasSide, inside, pixel, run, sideOf, two, view, watch } from './state.js';

const INKS = ['#e5484d', '#30a46c', '#3e82f7'];
const LETTERS = two ? { a: 'A ', b: 'B ', d: 'diff ' } : { a: '' };
const fields = ['low', 'high', 'gamma'].map(byId);
const values = Object.entries(LETTERS).map(([side, letter]) => {
  const node = element('b', { id: `value-${side}` });
  byId('values').append(element('span', {}, letter, node));
  return [side, node];
});

const shownSide = () => sideOf(activePane().mode);
const shownSummary = () => hasSide(activePlane(), shownSide()) && summaryNow(activePlane(), shownSide());
const isCoded = () => Boolean(activePlane().codes) && shownSide() !== 'd';

function writePixel() {
  const at = pixel();
  const plane = activePlane();
  if (document.activeElement !== byId('goto')) byId('goto').value = at.join();
  setText(byId('site'), siteOf(at) && `${siteOf(at)} site`);
  for (const [side, node] of values) {
    const samples = inside(plane, at) && hasSide(plane, side) ? samplesNow(plane, side, at) : null;
    setText(node, samples === null ? '–' : sampleText(plane, samples, side === 'd'));
    node.classList.toggle('wrong', side === 'd' && Boolean(samples?.some(Boolean)));
  }
}

function writePlane() {
  const plane = activePlane();
  const found = shownSummary();
  const extent = found && `samples ${found.least} to ${found.most}`;
  setText(byId('about'), plane.shows || plane.name);
  setText(byId('made'), [plane.id, plane.format, plane.stage, extent, plane.note].filter(Boolean).join(' · '));
  setText(byId('kinds'), plane.kinds?.join('; ') ?? '');
  const range = rangeOf(plane, shownSide());
  for (const field of fields) {
    if (document.activeElement !== field) field.value = range[field.id];
    field.disabled = isCoded();
  }
  setText(byId('trouble'), trouble.text);
}

function writeLegend() {
  const words = isCoded() ? activePlane().codes.map((word, code) => [CODE_COLOURS[code], `${code} ${word}`]) : [];
  const signs = [ABOVE, GREY, BELOW].map((colour, i) => [colour, ['first run larger', 'equal', 'smaller'][i]]);
  const chips = shownSide() === 'd' ? signs : words;
  if (byId('legend').textContent === chips.map(([, word]) => word).join('')) return;
  const chip = ([colour, word]) =>
    element('span', {}, element('i', { style: `background: rgb(${colour})` }), element('span', { textContent: word }));
  byId('legend').replaceChildren(...chips.map(chip));
}

function drawHistogram() {
  const canvas = byId('histogram');
  canvas.hidden = !view.histogram;
  const summary = shownSummary();
  const ratio = globalThis.devicePixelRatio;
  const [width, height] = [canvas.clientWidth, canvas.clientHeight].map((n) => Math.round(n * ratio));
  [canvas.width, canvas.height] = [width, height];
  if (!summary || canvas.hidden) return;
  const context = canvas.getContext('2d');
  const { color, accentColor } = getComputedStyle(canvas);
  const most = Math.log1p(Math.max(...summary.histogram.flat()));
  const several = summary.histogram.length > 1;
  context.globalAlpha = several ? 0.5 : 1;
  summary.histogram.forEach((bins, channel) => {
    context.fillStyle = several ? INKS[channel] : color;
    const edge = (i) => Math.floor((i * width) / bins.length);
    bins.forEach((count, i) => {
      const tall = (Math.log1p(count) / most) * height;
      context.fillRect(edge(i), height - tall, Math.max(1, edge(i + 1) - edge(i)), tall);
    });
  });
  context.globalAlpha = 1;
  context.fillStyle = accentColor;
  const { low, high } = rangeOf(activePlane(), shownSide());
  for (const end of [low, high]) {
    const part = (end - summary.least) / Math.max(1, summary.most - summary.least);
    context.fillRect(Math.min(Math.max(part, 0), 1) * (width - 2 * ratio), 0, 2 * ratio, height);
  }
}

/** Takes the nearer end of the range to a place in the histogram. */
function dragRange(event) {
  const summary = shownSummary();
  if (event.buttons !== 1 || !summary || isCoded()) return;
  const box = byId('histogram').getBoundingClientRect();
  const part = Math.min(Math.max((event.clientX - box.left) / box.width, 0), 1);
  const value = Math.round(summary.least + part * (summary.most - summary.least));
  const range = { ...rangeOf(activePlane(), shownSide()) };
  if (Math.abs(value - range.low) < Math.abs(value - range.high)) range.low = Math.min(value, range.high - 1);
  else range.high = Math.max(value, range.low + 1);
  takeRange(range);
}

function takeRange(range) {
  setRange(activePlane(), shownSide(), range);
  changed();
}

/** The samples of a tile that lie in the bounds, which count in its cells from its corner. */
function* samplesWithin(tile, [left, top, right, bottom]) {
  for (const plane of tile.planes)
    for (let y = Math.max(0, top); y <= Math.min(bottom, tile.height - 1); ++y)
      for (let x = Math.max(0, left); x <= Math.min(right, tile.width - 1); ++x) yield plane[y * tile.width + x];
}

/** Least and largest of what the active pane shows become the range. */
export function rangeOfView() {
  const [plane, side, pane] = [activePlane(), shownSide(), paneAt()];
  const level = levelFor(plane, side, pane.scale);
  const [left, top, right, bottom] = tilesInView(plane, level, pane.bounds);
  let [low, high] = [Infinity, -Infinity];
  for (let row = top; row <= bottom; ++row)
    for (let column = left; column <= right; ++column) {
      const tile = tileNow(plane, side, level, column, row);
      const within = pane.bounds.map((n, i) => Math.floor(n / factorOf(level)) - (i % 2 ? row : column) * TILE);
      for (const sample of tile ? samplesWithin(tile, within) : []) {
        low = Math.min(low, sample);
        high = Math.max(high, sample);
      }
    }
  if (low > high) return;
  if (side === 'd') [low, high] = [-Math.max(-low, high, 1), Math.max(-low, high, 1)];
  takeRange({ low, high: Math.max(high, low + 1), gamma: rangeOf(plane, side).gamma });
}

export const ownRangeAgain = () => takeRange(null);

for (const field of fields)
  field.addEventListener('change', () => {
    const [low, high, gamma] = fields.map((of) => of.valueAsNumber);
    if (high > low && gamma > 0) takeRange({ low, high, gamma });
  });
for (const kind of ['pointerdown', 'pointermove']) byId('histogram').addEventListener(kind, dragRange);
byId('goto').addEventListener('change', () => {
  const place = byId('goto').value.match(/\d+/g)?.map(Number);
  if (place?.length === 2) lookAt(place);
  byId('goto').blur();
});

watch(() => {
  writePixel();
  writePlane();
  writeLegend();
  drawHistogram();
});

/** Registers: those that differ between the runs first, then those away from their reset. */
export function writeRegisters() {
  const differ = run.registers.filter((r) => two && r.values[0] !== r.values[1]);
  const away = run.registers.filter((r) => !differ.includes(r));
  const count = two ? differ.length : away.length;
  const button = document.querySelector('[data-do=registers]');
  const verb = two ? (count === 1 ? 'differs' : 'differ') : 'away from reset';
  setText(button, `${count || 'no'} register${count === 1 ? '' : 's'} ${verb}`);
  button.classList.toggle('wrong', differ.length > 0);
  const row = (tag, cells, more) => element('tr', more, ...cells.map((cell) => element(tag, { textContent: cell })));
  byId('registers').append(row('th', ['register', 'reset', ...run.sides.map((side) => side.name)]));
  for (const r of [...differ, ...away])
    byId('registers').append(
      row('td', [r.key, r.reset, ...r.values.map((value) => value ?? '–')], {
        className: differ.includes(r) ? 'wrong' : '',
        title: r.meaning,
      }),
    );
  for (const { name, call } of run.sides.filter((side) => side.call))
    byId('calls').append(element('h2', { textContent: name }), element('pre', { textContent: call }));
}
