// What can be done with files. A file is an element with the data attributes that the server gave it.
import { ask } from '/pages/ask.js';
import { askText, confirmBox, say, shareBox, tell } from '/pages/boxes.js';

export function titleOf(file) { return file.querySelector('a').textContent; }

function may(files, what) { return files.every((file) => file.dataset.may.split(' ').includes(what)); }
function ids(files) { return files.map((file) => file.dataset.id); }
function called(files) { return files.length === 1 ? '“' + titleOf(files[0]) + '”' : files.length + ' files'; }

export function open(file) { file.querySelector('a').click(); }

async function run(work) {
  try {
    await work();
  } catch (trouble) {
    tell(trouble);
  }
}

// Tells of those that failed, or that it is done.
function report(answer, files, doneText, undo) {
  if (answer.failed.length === 0)
    return say(doneText, undo);
  const first = files.find((file) => file.dataset.id === answer.failed[0].id);
  const others = answer.failed.length > 1 ? ' (and ' + (answer.failed.length - 1) + ' others)' : '';
  say('“' + titleOf(first) + '”' + others + ': ' + answer.failed[0].message);
}

// `changed()` is called after something happened; it resolves when the page shows it.
export function actionsFor(files, place, changed) {
  if (files.length === 0)
    return [];
  const only = files.length === 1 ? files[0] : null;

  const share = () => run(async () => {
    await shareBox(only.dataset.id);
    await changed();
  });

  const rename = () => run(async () => {
    const title = await askText({ heading: 'Rename', label: 'New name', value: titleOf(only), button: 'Rename' });
    if (title === null || title === titleOf(only))
      return;
    await ask('/web/rename', { id: only.dataset.id, title });
    await changed('renamed');
  });

  const trash = () => run(async () => {
    const answer = await ask('/web/trash', { ids: ids(files) });
    const undo = () => run(async () => {
      await ask('/web/restore', { ids: ids(files) });
      await changed('restored');
    });
    report(answer, files, called(files) + ' moved to the trash', { name: 'Undo', run: undo });
    await changed('trashed');
  });

  const restore = () => run(async () => {
    report(await ask('/web/restore', { ids: ids(files) }), files, called(files) + ' restored');
    await changed('restored');
  });

  const remove = () => run(async () => {
    const sure = await confirmBox({
      heading: 'Delete for ever?',
      text: called(files) + ' will be gone for ever, also for everybody it is shared with.',
      button: 'Delete for ever',
      isDanger: true,
    });
    if (!sure)
      return;
    report(await ask('/web/delete', { ids: ids(files) }), files, called(files) + ' deleted for ever');
    await changed('deleted');
  });

  const download = () => run(async () => {
    if (only && only.dataset.kind === 'file') {
      location.href = '/uc?id=' + encodeURIComponent(only.dataset.id) + '&export=download';
      return;
    }
    say('Preparing the download …');
    const { archiveId } = await ask('/web/archive', { ids: ids(files) });
    location.href = '/e/export-result?authuser=0&archiveId=' + encodeURIComponent(archiveId);
  });

  const exports = only && only.dataset.exports ? JSON.parse(only.dataset.exports) : [];
  const downloading = exports.length
    ? { name: 'Download as', symbol: 'download', items: exports.map(([name, link]) => ({ name, link })) }
    : { name: 'Download', symbol: 'download', run: download };

  if (place === 'trash') {
    return may(files, 'own') ? [{ name: 'Restore', symbol: 'restore', run: restore },
      { name: 'Delete for ever…', symbol: 'close', run: remove, key: 'Delete' }] : [];
  }
  const actions = [];
  if (only && place !== 'file')
    actions.push({ name: 'Open', symbol: 'open', run: () => open(only), isPlain: true });
  if (only)
    actions.push({ name: 'Share…', symbol: 'share', run: share });
  if (!only || only.dataset.kind !== 'document' || exports.length)
    actions.push(downloading);
  if (only && may(files, 'edit'))
    actions.push({ name: 'Rename…', symbol: 'rename', run: rename, key: 'F2' });
  if (may(files, 'own'))
    actions.push({ name: 'Move to trash', symbol: 'trash', run: trash, key: 'Delete' });
  return actions;
}
