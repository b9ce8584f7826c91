// Menus: those at the pointer or at a button, and the panels that pages open by themselves.
import { make, symbol } from '/pages/ask.js';

let openMenus = []; // the outermost first
let opener = null;

function close(fromLevel = 0) {
  for (const menu of openMenus.splice(fromLevel))
    menu.remove();
}

export function closeMenus() {
  const hadFocus = openMenus.some((menu) => menu.contains(document.activeElement));
  close();
  if (hadFocus && opener && opener.isConnected)
    opener.focus();
}

function itemsIn(menu) { return [...menu.querySelectorAll('[role="menuitem"]')]; }

function put(menu, left, top, flippedLeft) {
  menu.style.visibility = 'hidden';
  document.body.append(menu);
  const { width, height } = menu.getBoundingClientRect();
  const fits = left + width <= innerWidth - 8;
  menu.style.left = Math.max(8, fits ? left : (flippedLeft === undefined ? innerWidth - 8 : flippedLeft) - width) + 'px';
  menu.style.top = Math.max(8, Math.min(top, innerHeight - 8 - height)) + 'px';
  menu.style.visibility = '';
}

function makeItem(entry, level) {
  const item = make(entry.link ? 'a' : 'button', 'item');
  item.setAttribute('role', 'menuitem');
  item.tabIndex = -1;
  if (entry.link)
    item.href = entry.link;
  else
    item.type = 'button';
  if (entry.newTab)
    item.target = '_blank';
  if (entry.symbol)
    item.append(symbol(entry.symbol));
  item.append(make('span', '', entry.name));
  const showInner = () => {
    const place = item.getBoundingClientRect();
    close(level + 1);
    show(entry.items, place.right - 4, place.top - 6, level + 1, place.left + 4);
    item.setAttribute('aria-expanded', 'true');
  };
  if (entry.items) {
    const onward = symbol('chevron');
    onward.classList.add('onward');
    item.append(onward);
    item.setAttribute('aria-haspopup', 'menu');
    item.dataset.inner = 'yes';
  }
  item.addEventListener('click', () => {
    if (entry.items) {
      showInner();
      return itemsIn(openMenus[level + 1])[0].focus();
    }
    closeMenus();
    if (entry.run)
      entry.run();
  });
  item.addEventListener('mouseenter', () => {
    item.focus({ preventScroll: true });
    if (entry.items)
      showInner();
    else
      close(level + 1);
  });
  return item;
}

function show(entries, left, top, level, flippedLeft) {
  const menu = make('div', 'panel floating');
  menu.setAttribute('role', 'menu');
  menu.tabIndex = -1;
  menu.append(...entries.map((entry) => (entry.line ? make('hr') : makeItem(entry, level))));
  menu.addEventListener('keydown', onKey);
  menu.addEventListener('contextmenu', (event) => event.preventDefault());
  openMenus[level] = menu;
  put(menu, left, top, flippedLeft);
  return menu;
}

function onKey(event) {
  const level = openMenus.indexOf(event.currentTarget);
  const items = itemsIn(event.currentTarget);
  const at = items.indexOf(document.activeElement);
  const go = (index) => items[(index + items.length) % items.length].focus();
  const keys = {
    ArrowDown: () => go(at + 1),
    ArrowUp: () => go(at < 0 ? items.length - 1 : at - 1),
    Home: () => go(0),
    End: () => go(items.length - 1),
    ArrowRight: () => { if (at >= 0 && items[at].dataset.inner) items[at].click(); },
    ArrowLeft: () => {
      if (level === 0)
        return;
      close(level);
      const outer = openMenus[level - 1].querySelector('[aria-expanded]');
      outer.removeAttribute('aria-expanded');
      outer.focus();
    },
    Escape: () => closeMenus(),
    Tab: () => closeMenus(),
  };
  if (!keys[event.key])
    return;
  event.preventDefault();
  event.stopPropagation();
  keys[event.key]();
}

// `entries`: {name, symbol, run} or {name, link, newTab} or {name, items} or {line: true}. At a point of the window; what
// has the focus gets it back. Whoever opens it by the keyboard is at the first entry at once.
export function openMenu(entries, left, top, isByKey = false) {
  if (!entries.length)
    return;
  close();
  opener = document.activeElement;
  const menu = show(entries, left, top, 0);
  (isByKey ? itemsIn(menu)[0] : menu).focus({ preventScroll: true });
}

document.addEventListener('pointerdown', (event) => {
  if (!openMenus.some((menu) => menu.contains(event.target)))
    close();
});
addEventListener('blur', () => close());
addEventListener('resize', () => close());
document.addEventListener('scroll', () => close(), { passive: true });

// The panels of the page close like menus, too.
for (const popup of document.querySelectorAll('details.popup')) {
  const items = () => [...popup.querySelectorAll('.item')];
  popup.addEventListener('click', (event) => { if (event.target.closest('.item')) popup.open = false; });
  popup.addEventListener('keydown', (event) => {
    const all = items();
    const at = all.indexOf(document.activeElement);
    if (event.key === 'Escape' && popup.open) {
      popup.open = false;
      popup.querySelector('summary').focus();
    } else if (event.key === 'ArrowDown' || event.key === 'ArrowUp') {
      popup.open = true;
      const step = event.key === 'ArrowDown' ? at + 1 : at - 1;
      all[(Math.max(step, at < 0 ? 0 : -1) + all.length) % all.length].focus();
    } else {
      return;
    }
    event.preventDefault();
  });
  document.addEventListener('pointerdown', (event) => { if (!popup.contains(event.target)) popup.open = false; });
  popup.addEventListener('focusout', (event) => {
    if (event.relatedTarget && !popup.contains(event.relatedTarget))
      popup.open = false;
  });
}
