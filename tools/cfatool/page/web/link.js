// The address behind # keeps place, zoom, planes, modes, ranges and what is switched on: a link says "look here".

import { byId } from './dom.js';
import { fit, modesOf } from './panes.js';
import { changed, run, view } from './state.js';

const WRITE_MS = 250;
const THEMES = ['', 'dark', 'light'];
const SWITCHES = ['only', 'labels', 'histogram', 'fitted'];
const usual = Object.fromEntries(SWITCHES.map((name) => [name, view[name]]));

const numbers = (text) => (text ?? '').split(',').map(Number);

function written() {
  const round = (n) => Number(n.toFixed(3));
  const words = new URLSearchParams({
    at: view.spot.join(),
    view: [view.x, view.y, view.zoom].map(round).join(),
    panes: view.panes.map((pane) => `${run.planes[pane.plane].id}:${pane.mode}`).join(),
    active: view.active,
    slider: round(view.slider),
  });
  for (const [key, { low, high, gamma }] of Object.entries(view.ranges)) words.append('range', [key, low, high, gamma]);
  for (const name of SWITCHES) if (view[name] !== usual[name]) words.set(name, Number(view[name]));
  if (view.theme) words.set('theme', view.theme);
  return `#${words}`;
}

/** Takes what the address says; false if it says nothing that this page has. */
export function readLink() {
  const words = new URLSearchParams(location.hash.slice(1));
  const panes = (words.get('panes') ?? '').split(',').flatMap((text) => {
    const [id, mode] = text.split(':');
    const plane = run.planes.findIndex((p) => p.id === id);
    return plane >= 0 && modesOf(run.planes[plane]).includes(mode) ? [{ plane, mode }] : [];
  });
  const [x, y, zoom] = numbers(words.get('view'));
  const spot = numbers(words.get('at'));
  if (panes.length === 0 || !(zoom > 0) || !spot.every(Number.isInteger)) return false;
  const active = Math.min(Number(words.get('active')) || 0, panes.length - 1);
  Object.assign(view, {
    x,
    y,
    zoom,
    panes,
    active,
    spot,
    hover: null,
    slider: Number(words.get('slider') ?? 0.5),
  });
  view.ranges = {};
  for (const range of words.getAll('range')) {
    const [key, low, high, gamma] = range.split(',');
    view.ranges[key] = { low: Number(low), high: Number(high), gamma: Number(gamma) };
  }
  for (const name of SWITCHES) view[name] = words.has(name) ? words.get(name) === '1' : usual[name];
  view.theme = THEMES.find((theme) => theme === words.get('theme')) ?? '';
  if (view.fitted) fit();
  changed();
  return true;
}

const planesIn = (hash) => new URLSearchParams(hash.slice(1)).get('panes')?.replace(/:\w+/g, '');

let timer = 0;

/** Writes the address when the view has come to rest. Back leads to the planes that were shown before. */
export function writeLink() {
  clearTimeout(timer);
  timer = setTimeout(() => {
    const hash = written();
    const chosen = location.hash && navigator.userActivation?.hasBeenActive; // by somebody
    const goesOn = chosen && planesIn(location.hash) !== planesIn(hash);
    if (location.hash !== hash) history[goesOn ? 'pushState' : 'replaceState'](null, '', hash);
  }, WRITE_MS);
}

/** Dark, light, or as the system has it: the next of them. */
export function nextTheme() {
  view.theme = THEMES[(THEMES.indexOf(view.theme) + 1) % THEMES.length];
  changed();
}

export async function copyLink() {
  history.replaceState(null, '', written());
  try {
    await navigator.clipboard.writeText(location.href);
    byId('said').textContent = 'Link copied.';
  } catch {
    byId('said').textContent = 'The link is in the address bar.';
  }
}
