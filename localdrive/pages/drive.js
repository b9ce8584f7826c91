// The pages with lists of files. The server makes the rows; this script asks for the page anew when something changed
// and takes over what is different.
import { actionsFor, titleOf } from '/pages/actions.js';
import { ask, make } from '/pages/ask.js';
import { askText, confirmBox, say, tell } from '/pages/boxes.js';
import { openMenu } from '/pages/menu.js';
import { isTyping } from '/pages/page.js';
import { adopt, clear, focusOn, isSelected, rows, selected, selectOnly } from '/pages/selection.js';
import { showActions } from '/pages/toolbar.js';
import { onArrival, uploadDropped, uploadFiles, uploadTree } from '/pages/upload.js';

const list = document.getElementById('files');
const body = document.getElementById('rows');
const { folder, place } = document.body.dataset;

async function pageAt(address) {
  const reply = await fetch(address, { headers: { Accept: 'text/html' } });
  // A session that is over leads to the sign-in page, and what is gone says so.
  if (reply.redirected || reply.status === 404)
    location.reload();
  return reply.ok ? new DOMParser().parseFromString(await reply.text(), 'text/html') : null;
}

function takeOver(page, id) {
  document.getElementById(id).replaceWith(document.adoptNode(page.getElementById(id)));
}

function rowsOf(page) { return [...page.getElementById('rows').children].map((row) => document.adoptNode(row)); }

let refreshing = null;
let again = false;

// Shows what there is now, as far down as was shown before. One request at a time; the last is never too early.
export function refresh(focusId) {
  if (refreshing) {
    again = true;
    return refreshing;
  }
  refreshing = (async () => {
    do {
      again = false;
      const address = new URL(location.href);
      address.searchParams.set('count', Math.max(200, Math.ceil(rows().length / 200) * 200));
      address.searchParams.delete('from');
      address.hash = '';
      const page = await pageAt(address);
      if (!page)
        continue;
      for (const id of ['crumbs', 'columns', 'after', 'storage', 'notice'])
        takeOver(page, id);
      document.body.dataset.version = page.body.dataset.version;
      adopt(rowsOf(page), focusId);
      watchMore();
    } while (again);
  })().catch(() => say('The local Drive does not answer.')).finally(() => { refreshing = null; });
  return refreshing;
}

// Further pages come when the list's end comes near.
const nearEnd = new IntersectionObserver(async (entries) => {
  const more = document.getElementById('more');
  if (!more || !entries.some((entry) => entry.isIntersecting))
    return;
  nearEnd.disconnect();
  const page = await pageAt(more.href).catch(() => null);
  if (!page || !more.isConnected)
    return;
  const known = new Set(rows().map((row) => row.dataset.id));
  body.append(...rowsOf(page).filter((row) => !known.has(row.dataset.id)));
  takeOver(page, 'after');
  adopt();
  watchMore();
}, { rootMargin: '800px' });

function watchMore() {
  const more = document.getElementById('more');
  nearEnd.disconnect();
  if (more)
    nearEnd.observe(more);
}

function currentActions() { return actionsFor(selected(), place, refresh_); }

async function refresh_(what) {
  if (what === 'trashed' || what === 'deleted')
    clear();
  await refresh();
  if (what === 'renamed' && selected().length)
    selected()[0].scrollIntoView({ block: 'nearest' });
}

list.addEventListener('selectionchanged', () => {
  const count = selected().length;
  document.getElementById('count').textContent = count > 1 ? count + ' selected' : '';
  showActions(currentActions().filter((action) => !action.isPlain));
});

// Menus.

const newThings = {
  folder: async () => {
    const title = await askText({ heading: 'New folder', label: 'Name', value: 'New folder', button: 'Create' });
    if (title === null)
      return;
    const made = await ask('/web/folder', { title, parent: folder });
    if (place !== 'folder')
      return say('“' + title + '” is in My Drive');
    await refresh(made.id);
    const row = rows().find((one) => one.dataset.id === made.id);
    if (row) {
      selectOnly(row);
      focusOn(row);
    }
  },
  upload: () => choose(false),
  uploadfolder: () => choose(true),
};

async function doNew(what) {
  try {
    await newThings[what]();
  } catch (trouble) {
    tell(trouble);
  }
}

function choose(isFolder) {
  const input = make('input');
  input.type = 'file';
  input.multiple = true;
  input.webkitdirectory = isFolder;
  input.addEventListener('change', () => {
    const files = [...input.files];
    if (!isFolder)
      return uploadFiles(files, folder);
    uploadTree(files.map((file) => ({ path: file.webkitRelativePath.split('/').slice(0, -1), file })), folder);
  });
  input.click();
}

for (const button of document.querySelectorAll('.new button'))
  button.addEventListener('click', () => doNew(button.dataset.do));

const wanted = sessionStorage.getItem('do');
if (wanted) {
  sessionStorage.removeItem('do');
  doNew(wanted);
}

document.getElementById('main').addEventListener('contextmenu', (event) => {
  const row = event.target.closest('.file');
  if (event.target.closest('.bar, .columns, #notice'))
    return;
  event.preventDefault();
  if (row && !isSelected(row))
    selectOnly(row);
  if (row)
    focusOn(row);
  const isByKey = event.button !== 2 && row;
  const at = isByKey ? row.getBoundingClientRect() : null;
  const entries = row ? currentActions() : place === 'folder' ? [
    { name: 'New folder…', symbol: 'newfolder', run: () => doNew('folder') },
    { name: 'Upload files…', symbol: 'upload', run: () => doNew('upload') },
    { name: 'Upload a folder…', symbol: 'drop', run: () => doNew('uploadfolder') },
  ] : [];
  openMenu(entries, at ? at.left + 40 : event.clientX, at ? at.bottom : event.clientY, isByKey);
});

list.addEventListener('keydown', (event) => {
  if (isTyping(event.target))
    return;
  const action = currentActions().find(({ key }) => key === event.key);
  if (!action)
    return;
  event.preventDefault();
  action.run();
});

document.getElementById('main').addEventListener('click', (event) => {
  if (!event.target.closest('.file, .bar, .columns, a, button'))
    clear();
});

// How the list looks. The choice is kept where the server sees it, so that the next page comes so at once.

function remember(name, value) {
  document.cookie = 'quenby_' + name + '=' + value + '; Path=/; Max-Age=31536000; SameSite=Lax';
}

for (const button of document.querySelectorAll('[data-view]')) {
  button.addEventListener('click', (event) => {
    event.preventDefault();
    list.classList.toggle('grid', button.dataset.view === 'grid');
    list.classList.toggle('list', button.dataset.view === 'list');
    for (const other of document.querySelectorAll('[data-view]'))
      other.toggleAttribute('aria-current', other === button);
    remember('view', button.dataset.view);
    watchMore();
  });
}

list.addEventListener('click', (event) => {
  const head = event.target.closest('.columns a[href]');
  if (!head || event.ctrlKey || event.shiftKey)
    return;
  event.preventDefault();
  remember('sort', new URL(head.href).searchParams.get('sort'));
  const column = head.parentElement.className;
  refresh().then(() => document.querySelector('.columns .' + column + ' a').focus({ preventScroll: true }));
});

document.addEventListener('click', async (event) => {
  if (event.target.id !== 'emptytrash')
    return;
  const sure = await confirmBox({
    heading: 'Empty the trash?',
    text: 'Everything in it will be gone for ever, also for everybody it is shared with.',
    button: 'Empty trash',
    isDanger: true,
  });
  if (!sure)
    return;
  try {
    await ask('/web/empty-trash', {});
    await refresh();
    say('The trash is empty');
  } catch (trouble) {
    tell(trouble);
  }
});

// Files that are dropped go into the folder that is shown, or that they are dropped on.

const dropArea = make('div');
dropArea.id = 'droparea';
dropArea.append(make('span'));
document.body.append(dropArea);

function bringsFiles(event) { return event.dataTransfer && [...event.dataTransfer.types].includes('Files'); }
function folderUnder(event) { return event.target.closest && event.target.closest('.file[data-kind="folder"]'); }

function stopDropping() {
  document.body.classList.remove('dropping');
  for (const row of body.querySelectorAll('.target'))
    row.classList.remove('target');
}

addEventListener('dragover', (event) => {
  if (!bringsFiles(event))
    return;
  event.preventDefault();
  event.dataTransfer.dropEffect = 'copy';
  const row = place === 'trash' ? null : folderUnder(event);
  for (const other of body.querySelectorAll('.target'))
    other.classList.toggle('target', other === row);
  if (row)
    row.classList.add('target');
  const here = place === 'folder' ? document.querySelector('.crumb.here').textContent : 'My Drive';
  dropArea.firstChild.textContent = 'Drop to put it into “' + (row ? titleOf(row) : here) + '”';
  document.body.classList.add('dropping');
});
addEventListener('dragleave', (event) => { if (!event.relatedTarget) stopDropping(); });
addEventListener('drop', (event) => {
  if (!bringsFiles(event))
    return;
  event.preventDefault();
  const row = place === 'trash' ? null : folderUnder(event);
  stopDropping();
  uploadDropped(event.dataTransfer, row ? row.dataset.id : folder);
});

// Of many files that arrive one after the other, not each is worth a look.
let arrival = 0;
onArrival(() => {
  if (!arrival)
    arrival = setTimeout(() => { arrival = 0; refresh(); }, 300);
});

// Whoever comes back to this page sees what happened meanwhile.
let isLooking = false;
async function lookAgain() {
  if (document.visibilityState !== 'visible' || isLooking)
    return;
  isLooking = true;
  const state = await ask('/web/state').catch(() => null);
  isLooking = false;
  if (state && state.version !== document.body.dataset.version)
    refresh();
}
document.addEventListener('visibilitychange', lookAgain);
addEventListener('focus', lookAgain);

adopt();
watchMore();
