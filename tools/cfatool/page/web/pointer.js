// Wheel, drag, pinch and taps on the panes.

import { byId } from './dom.js';
import { keepInside, lookAt, paneOf, zoomTo } from './panes.js';
import { activePane, changed, inside, view } from './state.js';

const CLICK = 4; // as far as a finger shakes, in pixels of the screen

const down = new Map(); // pointers that are pressed, by id: [x, y]
let moved = 0;
let sliding = false;

const place = (pane, event) => {
  const box = pane.node.getBoundingClientRect();
  return [event.clientX - box.left, event.clientY - box.top];
};

const spread = ([[x0, y0], [x1, y1]]) => Math.hypot(x1 - x0, y1 - y0);
const middle = (points) => [0, 1].map((i) => points.reduce((sum, p) => sum + p[i], 0) / points.length);

function onWheel(event) {
  const pane = paneOf(event.target);
  if (!pane) return;
  event.preventDefault();
  const lines = event.deltaMode === 1 ? 16 : 1;
  const speed = event.ctrlKey ? 0.01 : 0.002; // two fingers on a touch pad arrive with the control key
  zoomTo(view.zoom * Math.exp(-event.deltaY * lines * speed), pane.at(...place(pane, event)));
}

function onDown(event) {
  const pane = paneOf(event.target);
  if (!pane || event.button > 0) return;
  document.activeElement?.blur();
  view.active = pane.index;
  const at = place(pane, event);
  down.set(event.pointerId, at);
  pane.node.setPointerCapture(event.pointerId);
  moved = 0;
  sliding = activePane().mode === 'slide' && Math.abs(at[0] - view.slider * pane.box[0]) < 12;
  changed();
}

function hover(pane, at) {
  const point = pane.at(...at).map(Math.floor);
  view.hover = inside(pane.plane, point) ? point : null;
  changed();
}

function onMove(event) {
  const pane = paneOf(event.target);
  if (!pane) return;
  const at = place(pane, event);
  if (!down.has(event.pointerId)) {
    if (event.pointerType === 'mouse') hover(pane, at);
    return;
  }
  const before = [...down.values()];
  down.set(event.pointerId, at);
  const now = [...down.values()];
  const [from, to] = [middle(before), middle(now)];
  moved += Math.hypot(to[0] - from[0], to[1] - from[1]);
  if (sliding) {
    view.slider = Math.min(1, Math.max(0, at[0] / pane.box[0]));
    return changed();
  }
  if (now.length === 1 && moved < CLICK) return;
  view.x -= (to[0] - from[0]) / view.zoom;
  view.y -= (to[1] - from[1]) / view.zoom;
  if (now.length === 2) {
    moved = CLICK;
    zoomTo((view.zoom * spread(now)) / Math.max(1, spread(before)), pane.at(...to));
  }
  keepInside();
}

function onUp(event) {
  const pane = paneOf(event.target);
  if (!down.delete(event.pointerId) || !pane) return;
  const point = pane.at(...place(pane, event)).map(Math.floor);
  if (event.type === 'pointerup' && moved < CLICK && !sliding && inside(pane.plane, point)) lookAt(point);
}

export function setUpPointer() {
  const panes = byId('panes');
  panes.addEventListener('wheel', onWheel, { passive: false });
  panes.addEventListener('pointerdown', onDown);
  panes.addEventListener('pointermove', onMove);
  for (const kind of ['pointerup', 'pointercancel']) panes.addEventListener(kind, onUp);
  panes.addEventListener('pointerleave', () => {
    view.hover = null;
    changed();
  });
}
