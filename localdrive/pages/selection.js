// Which files of the list are selected, by mouse, touch and keyboard. One row is where the keyboard is; only that can be
// reached by Tab.

const list = document.getElementById('files');
const body = document.getElementById('rows');
let current = null; // where the keyboard is
let anchor = null;  // where a range begins
let typed = '';
let typedAt = 0;

export function rows() { return [...body.children]; }
export function selected() { return rows().filter(isSelected); }
export function isSelected(row) { return row.getAttribute('aria-selected') === 'true'; }

function mark(row, on) { row.setAttribute('aria-selected', String(on)); }
function changed() { list.dispatchEvent(new Event('selectionchanged')); }

function goTo(row) {
  if (current && current !== row)
    current.tabIndex = -1;
  current = row;
  row.tabIndex = 0;
}

export function focusOn(row) {
  goTo(row);
  row.focus({ preventScroll: true });
  row.scrollIntoView({ block: 'nearest' });
}

export function selectOnly(row) {
  for (const other of rows())
    mark(other, other === row);
  anchor = row;
  changed();
}

export function clear() {
  rows().forEach((row) => mark(row, false));
  changed();
}

function selectRange(row, keepsOthers) {
  const all = rows();
  const from = Math.max(0, all.indexOf(anchor));
  const to = all.indexOf(row);
  all.forEach((other, index) => {
    const isBetween = index >= Math.min(from, to) && index <= Math.max(from, to);
    mark(other, isBetween || (keepsOthers && isSelected(other)));
  });
  changed();
}

function toggle(row) {
  mark(row, !isSelected(row));
  anchor = row;
  changed();
}

function onClick(event) {
  const row = event.target.closest('.file');
  if (!row)
    return;
  const isFinger = event.pointerType === 'touch';
  // Keys press links as well; and a finger opens at once, unless something is selected.
  if (event.detail === 0 || (isFinger && selected().length === 0))
    return event.target.closest('a') || !isFinger ? undefined : row.querySelector('a').click();
  event.preventDefault();
  goTo(row);
  row.focus({ preventScroll: true });
  if (event.shiftKey)
    selectRange(row, event.ctrlKey);
  else if (event.ctrlKey || event.metaKey || isFinger)
    toggle(row);
  else
    selectOnly(row);
}

// The nearest row in the line above or below: in a list that is the next one.
function vertical(all, at, direction) {
  const here = all[at].getBoundingClientRect();
  let best = null;
  let lineTop = null;
  for (let index = at + direction; index >= 0 && index < all.length; index += direction) {
    const there = all[index].getBoundingClientRect();
    if (Math.abs(there.top - here.top) < 2)
      continue;
    if (lineTop !== null && Math.abs(there.top - lineTop) > 2)
      break;
    lineTop = there.top;
    const distance = Math.abs(there.left - here.left);
    if (!best || distance < best.distance)
      best = { index, distance };
  }
  return best ? best.index : at;
}

function moveTo(row, event) {
  focusOn(row);
  if (event.shiftKey)
    selectRange(row, false);
  else if (!event.ctrlKey)
    selectOnly(row);
}

function jumpTo(letter, all, at) {
  const now = Date.now();
  typed = now - typedAt < 800 ? typed + letter : letter;
  typedAt = now;
  const start = typed.length > 1 ? at : at + 1;
  const order = [...all.slice(start), ...all.slice(0, start)];
  const found = order.find((row) => row.querySelector('a').textContent.toLowerCase().startsWith(typed.toLowerCase()));
  if (found) {
    focusOn(found);
    selectOnly(found);
  }
}

function onKey(event) {
  const all = rows();
  if (!all.length || !event.target.closest('.file'))
    return;
  const at = Math.max(0, all.indexOf(current));
  const isGrid = list.classList.contains('grid');
  const page = Math.max(1, Math.floor(innerHeight / 60));
  const steps = {
    ArrowDown: () => vertical(all, at, 1),
    ArrowUp: () => vertical(all, at, -1),
    ArrowRight: () => (isGrid ? at + 1 : at),
    ArrowLeft: () => (isGrid ? at - 1 : at),
    Home: () => 0,
    End: () => all.length - 1,
    PageDown: () => at + page,
    PageUp: () => at - page,
  };
  if (steps[event.key] && !event.altKey) {
    moveTo(all[Math.max(0, Math.min(all.length - 1, steps[event.key]()))], event);
  } else if (event.key === ' ') {
    if (typed && Date.now() - typedAt < 800)
      jumpTo(' ', all, at);
    else
      toggle(all[at]);
  } else if (event.key === 'Enter') {
    all[at].querySelector('a').click();
  } else if (event.key.toLowerCase() === 'a' && event.ctrlKey) {
    all.forEach((row) => mark(row, true));
    changed();
  } else if (event.key === 'Escape') {
    clear();
  } else if (event.key.length === 1 && event.key !== '/' && !event.ctrlKey && !event.altKey && !event.metaKey) {
    jumpTo(event.key, all, at);
  } else {
    return;
  }
  event.preventDefault();
}

// After rows came or went: those that were selected stay so.
export function adopt(newRows, focusId) {
  const wasSelected = new Set(selected().map((row) => row.dataset.id));
  const hadFocus = body.contains(document.activeElement);
  const place = current ? rows().indexOf(current) : 0;
  if (newRows) {
    const currentId = focusId || (current && current.dataset.id);
    body.replaceChildren(...newRows);
    const all = rows();
    current = all.find((row) => row.dataset.id === currentId) || all[Math.min(place, all.length - 1)] || null;
    anchor = current;
  }
  for (const row of rows()) {
    mark(row, wasSelected.has(row.dataset.id));
    row.tabIndex = -1;
    row.querySelector('a').tabIndex = -1;
  }
  if (!current)
    current = rows()[0] || null;
  if (current) {
    current.tabIndex = 0;
    if (hadFocus)
      current.focus({ preventScroll: true });
  }
  changed();
}

list.addEventListener('click', onClick);
list.addEventListener('dblclick', (event) => {
  const row = event.target.closest('.file');
  if (row && !event.ctrlKey && !event.shiftKey)
    row.querySelector('a').click();
});
list.addEventListener('keydown', onKey);
list.addEventListener('focusin', (event) => {
  const row = event.target.closest('.file');
  if (row)
    goTo(row);
});
