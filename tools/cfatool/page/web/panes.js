// All panes: how many, where they look, what they show.

import { byId } from './dom.js';
import { Pane } from './pane.js';
import { activePane, activePlane, changed, run, two, view, watch } from './state.js';

const MOST_ZOOM = 160;
const panes = [0, 1, 2, 3].map((index) => new Pane(index));
byId('panes').append(...panes.map((pane) => pane.node));

export const paneOf = (node) => panes[node?.closest?.('.pane')?.dataset.pane];
export const paneAt = () => panes[view.active];

function arrange() {
  byId('panes').style.setProperty('--columns', view.panes.length > 1 ? 2 : 1);
  byId('panes').style.setProperty('--rows', view.panes.length > 2 ? 2 : 1);
  panes.forEach((pane) => (pane.node.hidden = pane.index >= view.panes.length));
}

watch(() => {
  arrange();
  for (const pane of panes) if (!pane.node.hidden) pane.draw();
});
new ResizeObserver(() => (view.fitted ? fit() : changed())).observe(byId('panes'));

function wholeZoom() {
  arrange();
  return Math.min(...paneAt().box.map((length, i) => length / activePlane().size[i]), MOST_ZOOM);
}

export function zoomTo(zoom, around = [view.x, view.y]) {
  const to = Math.min(MOST_ZOOM, Math.max(zoom, Math.min(1, wholeZoom() / 2)));
  view.x = around[0] + ((view.x - around[0]) * view.zoom) / to;
  view.y = around[1] + ((view.y - around[1]) * view.zoom) / to;
  Object.assign(view, { zoom: to, fitted: false });
  keepInside();
}

/** Keeps a part of the plane in the middle of the panes. */
export function keepInside() {
  const [width, height] = activePlane().size;
  view.x = Math.min(Math.max(view.x, 0), width);
  view.y = Math.min(Math.max(view.y, 0), height);
  changed();
}

export function fit() {
  const [x, y] = activePlane().size.map((length) => length / 2);
  Object.assign(view, { x, y, zoom: wholeZoom(), fitted: true });
  changed();
}

/** Looks at a pixel; brings it into view, at `zoom` if one is given. */
export function lookAt([x, y], zoom) {
  const [width, height] = activePlane().size;
  view.spot = [Math.min(Math.max(x, 0), width - 1), Math.min(Math.max(y, 0), height - 1)];
  view.hover = null;
  if (zoom) Object.assign(view, { zoom, fitted: false });
  [view.x, view.y] = [view.x, view.y].map((middle, i) => {
    const half = paneAt().box[i] / 2 / view.zoom - 1;
    const to = view.spot[i] + 0.5;
    const length = activePlane().size[i];
    if (!zoom && Math.abs(to - middle) <= half) return middle;
    return length > 2 * half ? Math.min(Math.max(to, half), length - half) : length / 2; // no more empty than need be
  });
  changed();
}

/** Shows a plane: in the active pane, and in those that show the same plane unless it is to be `alone`. */
export function showPlane(index, alone = false) {
  const before = activePane().plane;
  view.panes.forEach((pane, i) => {
    if (i === view.active || (!alone && pane.plane === before)) pane.plane = index;
  });
  for (const pane of view.panes)
    if (!modesOf(run.planes[pane.plane]).includes(pane.mode)) pane.mode = modesOf(run.planes[pane.plane])[0];
  changed();
}

/** The modes that make sense for a plane. */
export function modesOf(plane) {
  if (plane.comparable) return ['a', 'b', 'd', 'blink', 'slide'];
  return ['a', 'b'].filter((_, i) => plane.has[i]);
}

export function setMode(mode) {
  if (modesOf(activePlane()).includes(mode)) activePane().mode = mode;
  changed();
}

/** One, two or four panes. Of two runs they show the sides of the plane, of one run the planes from this one on. */
export function setPanes(count) {
  const first = { ...activePane() };
  const modes = two && activePlane().comparable ? ['a', 'b', 'd', 'slide'] : [];
  view.panes = Array.from({ length: count }, (_, i) => {
    if (count === 1) return first;
    if (modes.length > 0) return { plane: first.plane, mode: modes[i] };
    return { plane: Math.min(first.plane + i, run.planes.length - 1), mode: first.mode };
  });
  view.active = 0;
  if (view.fitted) fit();
  changed();
}
