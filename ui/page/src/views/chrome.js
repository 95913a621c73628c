// The frame around the page: title bar, language, resize borders, and the
// one click handler that turns any [data-command] button into a command.

import { TEXT } from '../text.js';

const RESIZE_EDGES = ['left', 'right', 'top', 'topLeft', 'topRight', 'bottom', 'bottomLeft', 'bottomRight'];

export function wireCommands(sendCommand) {
  document.addEventListener('click', (event) => {
    const button = event.target.closest('[data-command]');
    if (!button || button.disabled) return;
    const { command, url } = button.dataset;
    sendCommand(command === 'openExternal' ? { command, url } : { command });
  });
  document.getElementById('titlebar').addEventListener('mousedown', (event) => {
    // The bar moves the window; its buttons stay buttons. Double-click does nothing.
    if (event.button !== 0 || event.detail > 1 || event.target.closest('button')) return;
    event.preventDefault();
    sendCommand({ command: 'startDrag' });
  });
  for (const edge of document.querySelectorAll('.resize-edge')) {
    if (!RESIZE_EDGES.includes(edge.dataset.edge)) continue;
    edge.addEventListener('mousedown', (event) => {
      if (event.button !== 0) return;
      event.preventDefault();
      sendCommand({ command: 'startResize', edge: edge.dataset.edge });
    });
  }
}

// Direction, the language switch and every fixed caption.
export function applyLanguage(language) {
  const words = TEXT[language];
  const root = document.documentElement;
  root.lang = language;
  root.dir = language === 'ar' ? 'rtl' : 'ltr';
  for (const node of document.querySelectorAll('[data-text]')) node.textContent = words[node.dataset.text];
  for (const node of document.querySelectorAll('[data-label]')) {
    node.setAttribute('aria-label', words[node.dataset.label]);
    if (node.tagName === 'BUTTON') node.title = words[node.dataset.label];
  }
  // Buttons whose visible text is their name get only a tooltip.
  for (const node of document.querySelectorAll('[data-title]')) node.title = words[node.dataset.title];
  document.getElementById('language-en').setAttribute('aria-pressed', String(language === 'en'));
  document.getElementById('language-ar').setAttribute('aria-pressed', String(language === 'ar'));
}
