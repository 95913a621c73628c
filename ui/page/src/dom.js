// Small DOM helpers shared by the views.

export const byId = (id) => document.getElementById(id);

export function element(tag, props = {}, children = []) {
  const node = document.createElement(tag);
  for (const [name, value] of Object.entries(props)) {
    if (name === 'dataset') Object.assign(node.dataset, value);
    else if (name in node) node[name] = value;
    else node.setAttribute(name, value);
  }
  node.append(...children);
  return node;
}

// Writes only on change, so unchanged text keeps its selection and layout.
export function setText(node, text) {
  if (node.textContent !== text) node.textContent = text;
}

export function show(node, visible) {
  node.hidden = !visible;
}

// Rebuilds a list only when what it shows changed (keeps focus and scroll otherwise).
export function replaceIfChanged(node, key, build) {
  if (node.dataset.key === key) return;
  node.dataset.key = key;
  node.replaceChildren(...build());
}
