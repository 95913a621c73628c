// Notices from the launcher as toasts in the top corner on the reading side:
// newest on top, each gone after eight seconds or when dismissed.

import { byId, element } from '../dom.js';

const NOTICE_LIFETIME_MS = 8000;
const MAX_TOASTS = 4;

export function showToast(notice, words) {
  const list = byId('toasts');
  const toast = element('div', { className: `toast toast-${notice.kind}`, role: notice.kind === 'error' ? 'alert' : 'status' }, [
    element('p', { className: 'toast-message', dir: 'auto', textContent: notice.message }),
  ]);
  const dismiss = element('button', { type: 'button', className: 'toast-dismiss', title: words.dismiss, 'aria-label': words.dismiss });
  dismiss.innerHTML = '<svg viewBox="0 0 24 24" aria-hidden="true"><path d="m7 7 10 10M17 7 7 17"/></svg>';
  dismiss.addEventListener('click', () => toast.remove());
  toast.append(dismiss);
  list.prepend(toast);
  while (list.children.length > MAX_TOASTS) list.lastElementChild.remove();
  setTimeout(() => toast.remove(), NOTICE_LIFETIME_MS);
}
