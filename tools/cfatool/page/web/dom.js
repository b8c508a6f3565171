// Elements by id, and new ones.

export const byId = (id) => document.getElementById(id);

/** A new element: properties as they are, `data` and `aria` as their attributes, then its children. */
export function element(tag, { data = {}, aria = {}, ...properties } = {}, ...children) {
  const made = Object.assign(document.createElement(tag), properties);
  Object.assign(made.dataset, data);
  for (const [name, value] of Object.entries(aria)) made.setAttribute(`aria-${name}`, value);
  made.append(...children);
  return made;
}

/** Sets a text only where it changes: the page is laid out once a frame at most. */
export function setText(node, text) {
  if (node.textContent !== text) node.textContent = text;
}
