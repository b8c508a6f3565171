// What the page shows, and who wants to know when that changes.

/** The run or the two runs: planes, sides, registers; written into the page by the program. */
export const run = JSON.parse(document.getElementById('run').textContent);
run.planes.forEach((plane, index) => Object.assign(plane, { index, summaries: {} }));

export const two = run.sides.length === 2;

export const view = {
  x: 0, // in the middle of every pane, in pixels of the planes
  y: 0,
  zoom: 1, // size of a pixel on the screen
  panes: [{ plane: 0, mode: 'a' }], // modes: a, b, d (difference), blink, slide
  active: 0,
  spot: [0, 0], // the pixel that is looked at
  hover: null, // the one under the pointer, instead
  slider: 0.5,
  blink: 'a',
  only: false, // list only what differs
  labels: true,
  histogram: true,
  theme: '', // dark, light, or as the system has it
  fitted: false, // the whole plane, whatever the size of the window
  ranges: {}, // by range key: low, high, gamma as chosen
};

export const activePane = () => view.panes[view.active];
export const activePlane = () => run.planes[activePane().plane];
export const pixel = () => view.hover ?? view.spot;

/** The side that a mode shows now: a, b or d. */
export const sideOf = (mode) => (mode === 'blink' ? view.blink : mode === 'slide' ? 'a' : mode);

export const inside = (plane, [x, y]) => x >= 0 && y >= 0 && x < plane.size[0] && y < plane.size[1];
export const hasSide = (plane, side) => (side === 'd' ? plane.comparable : plane.has[side === 'b' ? 1 : 0]);

const watchers = [];
let asked = false;

/** Calls `watcher` once a frame after changes. */
export const watch = (watcher) => watchers.push(watcher);

/** Says that something has changed. */
export function changed() {
  if (asked) return;
  asked = true;
  requestAnimationFrame(() => {
    asked = false;
    for (const watcher of watchers) watcher();
  });
}
