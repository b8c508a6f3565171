// Opens the page: on the first stage that is wrong, or on the RGB output.

import { setUpActions } from './actions.js';
import { byId, setText } from './dom.js';
import { writeRegisters } from './inspector.js';
import { readLink, writeLink } from './link.js';
import { showVerdicts } from './list.js';
import { fit, modesOf, setMode, setPanes, showPlane } from './panes.js';
import { setUpPointer } from './pointer.js';
import { firstDifference } from './seek.js';
import { changed, run, view, watch } from './state.js';

const WIDE = 1200; // room for both runs side by side

document.title = run.title;
setText(byId('title'), run.title);
const { size } = run.planes.find((plane) => plane.size[0] > 0);
setText(byId('size'), `${size.join(' × ')}${run.bayer === null ? '' : `, pattern ${run.bayer}`}`);
writeRegisters();
setUpActions();
setUpPointer();

let touched = readLink();
if (!touched) {
  const seen = run.planes.filter((plane) => modesOf(plane).length > 0);
  const first = seen.findLast((plane) => plane.id === 'out.ppm' || plane.id === 'out_rgb') ?? seen.at(-1);
  view.panes[0] = { plane: first.index, mode: modesOf(first)[0] };
  view.spot = size.map((length) => length >> 1);
  fit();
}
for (const kind of ['pointerdown', 'keydown', 'wheel'])
  globalThis.addEventListener(kind, () => (touched = true), { once: true });
globalThis.addEventListener('hashchange', readLink);
globalThis.matchMedia('(prefers-color-scheme: dark)').addEventListener('change', changed);

showVerdicts((first) => {
  if (touched || !first) return;
  showPlane(first.index);
  setMode('d');
  if (globalThis.innerWidth >= WIDE && first.comparable) setPanes(2);
  firstDifference();
});
watch(writeLink);
changed();
