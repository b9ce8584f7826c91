// What all pages of the application do: their menus, and the search field by its key.
import '/pages/menu.js';
import { say } from '/pages/boxes.js';

document.body.classList.add('alive');

export function isTyping(target) { return target.closest('input, textarea, select, dialog, [contenteditable]') !== null; }

document.addEventListener('keydown', (event) => {
  if (event.key !== '/' || event.ctrlKey || event.altKey || isTyping(event.target))
    return;
  event.preventDefault();
  const field = document.getElementById('q');
  field.focus();
  field.select();
});

// What one page did is told on the next.
const left = sessionStorage.getItem('note');
if (left) {
  sessionStorage.removeItem('note');
  say(left);
}

export function sayOnNextPage(text) { sessionStorage.setItem('note', text); }

// On pages without files, "New" leads to where they are.
for (const button of document.querySelectorAll('.new button')) {
  button.addEventListener('click', () => {
    if (document.getElementById('rows'))
      return;
    sessionStorage.setItem('do', button.dataset.do);
    location.href = '/';
  });
}
