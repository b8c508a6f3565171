// Everything that can be done: by key, and by the button that has its name.

import { byId, element, setText } from './dom.js';
import { ownRangeAgain, rangeOfView } from './inspector.js';
import { stepPlane, stepStage } from './list.js';
import { copyLink, nextTheme } from './link.js';
import { fit, lookAt, setMode, setPanes, zoomTo } from './panes.js';
import { firstDifference, seekDifference, seekPlane } from './seek.js';
import { activePane, changed, two, view, watch } from './state.js';

const BLINK_MS = 450;

const move = (dx, dy) => (event) => {
  const far = event.shiftKey ? 10 : 1;
  lookAt([view.spot[0] + dx * far, view.spot[1] + dy * far]);
};
const zoomBy = (factor) => () => zoomTo(view.zoom * factor, [view.spot[0] + 0.5, view.spot[1] + 0.5]);

/** Changes something of the view. */
const set = (change) => () => {
  Object.assign(view, change());
  changed();
};
const slide = (by) => set(() => ({ slider: Math.min(1, Math.max(0, view.slider + by)) }));

/** Says what has not been found. */
const seek = (search, text) => async () => setText(byId('said'), (await search()) ? '' : text);

const dialog = (name) => () => {
  const node = byId(`${name}-dialog`);
  if (node.open) node.close();
  else node.showModal();
};

// Name, text of its button, keys, what it does.
const ACTIONS = [
  ['left', '', ['ArrowLeft'], 'one pixel left, with Shift ten', move(-1, 0)],
  ['right', '', ['ArrowRight'], 'one pixel right', move(1, 0)],
  ['up', '', ['ArrowUp'], 'one pixel up', move(0, -1)],
  ['down', '', ['ArrowDown'], 'one pixel down', move(0, 1)],
  ['goto', '', ['g'], 'go to a pixel: x,y', () => byId('goto').select()],
  ['next-plane', '›', ['j', 'J'], 'next plane, with Shift in this pane alone', (event) => stepPlane(1, event.shiftKey)],
  ['previous-plane', '‹', ['k', 'K'], 'previous plane', (event) => stepPlane(-1, event.shiftKey)],
  ['next-stage', '»', [']'], 'next stage', () => stepStage(1)],
  ['previous-stage', '«', ['['], 'previous stage', () => stepStage(-1)],
  ['zoom-in', '+', ['+', '='], 'zoom in', zoomBy(2)],
  ['zoom-out', '−', ['-'], 'zoom out', zoomBy(0.5)],
  ['fit', 'fit', ['f'], 'the whole picture', fit],
  ['one', '1:1', ['1'], 'one to one', () => zoomTo(1 / globalThis.devicePixelRatio, view.spot)],
  ['two-panes', '▥', ['2'], 'two panes, or one again', () => setPanes(view.panes.length === 2 ? 1 : 2)],
  ['four-panes', '⊞', ['4'], 'four panes, or one again', () => setPanes(view.panes.length === 4 ? 1 : 4)],
  ['next-pane', '', ['w'], 'next pane', set(() => ({ active: (view.active + 1) % view.panes.length }))],
  ['range', 'view', ['r'], 'range of what is in view', rangeOfView],
  ['own-range', 'reset', ['R'], 'range of its own again', ownRangeAgain],
  ['histogram', '', ['h'], 'histogram on or off', set(() => ({ histogram: !view.histogram }))],
  ['labels', 'labels', ['l'], 'labels and values on or off', set(() => ({ labels: !view.labels }))],
  ['theme', '◐', ['t'], 'dark, light, or as the system has it', nextTheme],
  ['link', 'link', ['c'], 'copy a link to what you see', copyLink],
  ['registers', '', ['i'], 'registers and calls', dialog('registers')],
  ['help', '?', ['?'], 'this help', dialog('help')],
];
const OF_TWO = [
  ['a', 'A', ['a'], 'the first run', () => setMode('a')],
  ['b', 'B', ['b'], 'the other run', () => setMode('b')],
  ['d', 'diff', ['d'], 'the difference, first minus other', () => setMode('d')],
  ['blink', 'blink', [' '], 'blink between the two', () => setMode(activePane().mode === 'blink' ? 'a' : 'blink')],
  ['slide', 'slider', ['s'], 'slider: first run left, other right', () => setMode('slide')],
  ['slide-left', '', [','], 'slider to the left', slide(-0.05)],
  ['slide-right', '', ['.'], 'slider to the right', slide(0.05)],
  ['first', 'first', ['Home'], 'first difference of this plane', seek(firstDifference, 'No difference here.')],
  ['previous', '‹ prev', ['p'], 'previous difference', seek(() => seekDifference(-1), 'No difference before.')],
  ['next', 'next ›', ['n'], 'next difference', seek(() => seekDifference(1), 'No further difference.')],
  ['previous-wrong', '', ['P'], 'previous plane that differs', seek(() => seekPlane(-1), 'No plane before differs.')],
  ['next-wrong', '', ['N'], 'next plane that differs', seek(() => seekPlane(1), 'No further plane differs.')],
  ['only', '', ['o'], 'list only what differs', set(() => ({ only: !view.only }))],
];
const actions = two ? [...OF_TWO, ...ACTIONS] : ACTIONS;
const GROUPS = [
  ['a', 'b', 'd', 'blink', 'slide'],
  ['first', 'previous', 'next'],
  ['previous-stage', 'previous-plane', 'next-plane', 'next-stage'],
  ['zoom-out', 'zoom', 'zoom-in', 'fit', 'one'],
  ['two-panes', 'four-panes'],
  ['labels', 'theme', 'link', 'help'],
];

const shownKey = (key) => ({ ' ': 'Space' })[key] ?? key.replace('Arrow', '');

function addButtons() {
  for (const names of GROUPS) {
    const shown = names.filter((name) => name === 'zoom' || actions.some((action) => action[0] === name));
    const made = shown.map((name) =>
      name === 'zoom' ? element('output', { id: name }) : element('button', { type: 'button', data: { do: name } }),
    );
    if (made.length > 0) document.querySelector('header').append(element('div', { className: 'group' }, ...made));
  }
}

function nameButtons() {
  for (const [name, label, keys, text, run] of actions)
    for (const button of document.querySelectorAll(`[data-do="${name}"]`)) {
      button.title = `${text} (${keys.map(shownKey).join(' or ')})`;
      if (label) setText(button, label);
      if (label.length < 3) button.ariaLabel = text;
      button.addEventListener('click', run);
    }
}

const inWords = (event) => event.target.matches('input:not([type=checkbox])');

function onKey(event) {
  if (event.ctrlKey || event.altKey || event.metaKey) return;
  if (inWords(event)) {
    if (event.key === 'Escape') event.target.blur();
    return;
  }
  if (event.key === ' ' && event.target.matches('.row:focus-visible, input')) return; // presses what is in focus
  const open = document.querySelector('dialog[open]');
  const found = actions.find(([name, , keys]) => keys.includes(event.key) && (!open || open.id === `${name}-dialog`));
  if (!found) return;
  event.preventDefault();
  found[4](event);
}

export function setUpActions() {
  for (const node of document.querySelectorAll('.of-two')) node.hidden = !two;
  addButtons();
  nameButtons();
  const row = ([, , keys, text]) =>
    element('li', {}, element('span', {}, ...keys.map((key) => element('kbd', { textContent: shownKey(key) }))), text);
  byId('keys').append(...actions.map(row));
  document.addEventListener('keydown', onKey);
  for (const node of document.querySelectorAll('dialog'))
    node.addEventListener('click', (event) => event.target === node && node.close());
  setInterval(() => {
    if (view.panes.some((pane) => pane.mode === 'blink')) set(() => ({ blink: view.blink === 'a' ? 'b' : 'a' }))();
  }, BLINK_MS);
  watch(() => {
    const { zoom, theme } = view;
    document.documentElement.style.colorScheme = theme;
    setText(
      byId('zoom'),
      zoom >= 0.995 ? `${Number(zoom.toFixed(zoom < 10 ? 1 : 0))}×` : `${Math.round(zoom * 100)} %`,
    );
    const pressed = { [activePane().mode]: true, 'two-panes': view.panes.length === 2, labels: view.labels };
    pressed['four-panes'] = view.panes.length === 4;
    for (const button of document.querySelectorAll('.group button'))
      button.setAttribute('aria-pressed', Boolean(pressed[button.dataset.do]));
  });
}
