// The list: stages in pipeline order with their verdicts, under each its planes with their samples at the pixel.

import { sampleText } from './colour.js';
import { byId, element, setText } from './dom.js';
import { showPlane } from './panes.js';
import { firstDifference } from './seek.js';
import { samplesNow, whenCompared } from './source.js';
import { activePlane, changed, inside, pixel, run, two, view, watch } from './state.js';

const WORDS = {
  equal: ['equal', 'every plane and image of this stage is equal'],
  differs_here: ['differs here', 'what this stage reads is equal, what it makes is not'],
  differs_by_its_input: ['by its input', 'something that this stage reads differs already'],
  suspect: ['suspect', 'what would tell whether it is this stage is not seen'],
  not_seen: ['not seen', 'not every plane of this stage is in both runs'],
  off: ['off', 'switched off by the registers'],
};
const REST_MS = 70; // the pointer rests: samples of all planes are read

const rows = run.planes.map((plane) => {
  const [name, count] = ['name', 'count'].map((className) => element('span', { className }));
  const values = run.sides.map(() => element('span', { className: 'value' }));
  const title = `${plane.id}: ${plane.shows}`;
  const node = element('button', { className: 'row', type: 'button', title }, name, count, ...values);
  name.textContent = plane.name;
  node.disabled = !plane.has.some(Boolean); // unreadable
  node.addEventListener('click', (event) => showPlane(plane.index, event.shiftKey));
  return { plane, node, count, values };
});
const sections = run.stages.map((stage) => {
  const badge = element('span', { className: 'verdict' });
  const head = element('h2', {}, stage.name, badge);
  return { stage, badge, node: element('section', {}, head, ...stage.planes.map((index) => rows[index].node)) };
});
byId('stages').style.setProperty('--sides', run.sides.length);
byId('stages').append(...sections.map(({ node }) => node));
byId('only').addEventListener('change', () => {
  view.only = byId('only').checked;
  changed();
});

const isDifferent = (plane) => plane.verdict !== undefined && !plane.equal;

const canBeSeen = (plane) => plane.has.some(Boolean);

/** The planes that the list shows now. */
const listed = () => run.planes.filter((plane) => !view.only || isDifferent(plane));

function writeCounts() {
  for (const { plane, node, count } of rows) {
    const missing = two && run.sides.find((_, side) => !plane.has[side]);
    const found = plane.verdict === 'differs' ? `≠ ${plane.differing.toLocaleString('en')}` : (plane.verdict ?? '');
    setText(count, plane.note ? '!' : plane.equal ? '=' : missing ? `not in ${missing.name}` : found);
    count.title = plane.note;
    node.classList.toggle('differs', isDifferent(plane));
  }
}

function writeHeadline(verdict) {
  const first = run.planes[verdict.first];
  const button = element('button', { type: 'button', className: first ? 'wrong' : '', textContent: verdict.headline });
  button.addEventListener('click', () => {
    if (first) showPlane(first.index);
    if (first) firstDifference();
  });
  byId('headline').replaceChildren(button);
  return first;
}

/** Shows what the comparison has found; `opened` is told the plane to begin with, if one differs. */
export async function showVerdicts(opened) {
  writeCounts();
  if (!two) return;
  byId('headline').replaceChildren(element('div', { textContent: 'Comparing …' }));
  const verdict = await whenCompared();
  verdict.planes.forEach((found, i) => Object.assign(run.planes[i], found, { equal: found.verdict === 'equal' }));
  for (const { stage, badge } of sections) {
    stage.verdict = verdict.stages[stage.name] ?? '';
    const [textContent, title] = WORDS[stage.verdict] ?? ['', ''];
    Object.assign(badge, { className: `verdict ${stage.verdict}`, textContent, title });
  }
  writeCounts();
  opened(writeHeadline(verdict));
  changed();
}

export function stepPlane(step, alone) {
  const planes = listed().filter(canBeSeen);
  const at = planes.findIndex((plane) => plane.index >= activePlane().index);
  const to = planes[Math.min(Math.max(0, (at < 0 ? planes.length : at) + step), planes.length - 1)];
  if (to) showPlane(to.index, alone);
}

/** The first plane of the next stage in a direction. */
export function stepStage(step) {
  const shown = sections.map(({ stage }) =>
    stage.planes.map((i) => run.planes[i]).filter((p) => canBeSeen(p) && listed().includes(p)),
  );
  const stages = shown.filter((planes) => planes.length > 0);
  const at = stages.findIndex((planes) => planes.at(-1).index >= activePlane().index);
  const to = stages[at < 0 ? stages.length - 1 : at + step];
  if (to) showPlane(to[0].index);
}

let writtenAt = '';
let restTimer = 0;

/** Writes the samples of every listed plane at the pixel. */
function writeValues() {
  const at = pixel();
  for (const { plane, node, values } of rows) {
    if (node.hidden) continue;
    const samples = ['a', 'b'].map((side, i) =>
      inside(plane, at) && plane.has[i] ? samplesNow(plane, side, at) : undefined,
    );
    values.forEach((cell, i) => setText(cell, plane.has[i] ? sampleText(plane, samples[i]) : ''));
    const differs = plane.comparable && samples[0]?.some((value, c) => samples[1] && value !== samples[1][c]);
    node.classList.toggle('here', Boolean(differs));
  }
}

/** Scrolls the list, and never the window, until the row is well inside. */
function bringIntoView(node) {
  const stages = byId('stages');
  const top = node.getBoundingClientRect().top - stages.getBoundingClientRect().top;
  if (top < 40 || top > stages.clientHeight - 120) stages.scrollTop += top - stages.clientHeight / 2;
}

watch(() => {
  byId('only').checked = view.only;
  const visible = new Set(listed());
  for (const { plane, node } of rows) {
    node.hidden = !visible.has(plane);
    const on = plane === activePlane();
    if (on && node.ariaPressed !== 'true') bringIntoView(node);
    node.ariaPressed = on;
  }
  for (const { stage, node } of sections)
    node.hidden = !(stage.planes.some((i) => visible.has(run.planes[i])) || (stage.verdict && !view.only));
  const at = pixel().join();
  if (at === writtenAt) return writeValues();
  clearTimeout(restTimer);
  restTimer = setTimeout(() => {
    writtenAt = at;
    writeValues();
  }, REST_MS);
});
