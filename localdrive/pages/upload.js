// Files and folders on their way into the Drive, one request a file, two at a time.
import { ask, make, send, symbol } from '/pages/ask.js';
import { corner, tell } from '/pages/boxes.js';

const atOnce = 2;
const waiting = [];
let running = 0;
let panel = null;
let total = 0;
let ended = 0;
let failures = 0;
let whenArrived = () => {};

// `arrived()` is called after files have got there.
export function onArrival(arrived) { whenArrived = arrived; }

function heading() {
  if (ended < total)
    return 'Uploading ' + (total - ended) + (total - ended === 1 ? ' file' : ' files');
  if (failures)
    return failures + ' of ' + total + ' not uploaded';
  return total === 1 ? '1 file uploaded' : total + ' files uploaded';
}

function showHeading() { panel.querySelector('strong').textContent = heading(); }

function showPanel() {
  if (panel)
    return;
  total = ended = failures = 0;
  panel = make('section', 'uploads');
  panel.setAttribute('aria-label', 'Uploads');
  const head = make('header');
  const words = make('strong');
  words.setAttribute('role', 'status');
  const button = make('button', 'tool');
  button.type = 'button';
  button.title = 'Close';
  button.setAttribute('aria-label', 'Close the list of uploads');
  button.append(symbol('close'));
  button.addEventListener('click', () => {
    panel.hidden = true;
    if (ended === total)
      removePanel();
  });
  head.append(words, button);
  panel.append(head, make('ul'));
  corner().append(panel);
}

function removePanel() {
  panel.remove();
  panel = null;
}

function showRow(name) {
  const row = make('li');
  const label = make('span', 'cut', name);
  label.title = name;
  const progress = make('progress');
  progress.max = 1;
  progress.value = 0;
  progress.setAttribute('aria-label', name);
  const stop = make('button', 'tool');
  stop.type = 'button';
  stop.title = 'Cancel';
  stop.setAttribute('aria-label', 'Cancel ' + name);
  stop.append(symbol('close'));
  const why = make('span', 'why');
  row.append(label, progress, stop, why);
  panel.querySelector('ul').append(row);
  return { row, progress, stop, why };
}

function end(job, trouble) {
  const mark = symbol(trouble ? 'warning' : 'check');
  mark.classList.add(trouble ? 'failed' : 'done');
  job.progress.replaceWith(make('span'));
  job.stop.replaceWith(mark);
  job.why.textContent = trouble ? trouble.message : '';
  ended += 1;
  failures += trouble ? 1 : 0;
  showHeading();
  if (ended === total && panel.hidden)
    removePanel();
}

async function start(job) {
  running += 1;
  let trouble = null;
  try {
    if (job.stopping.signal.aborted)
      throw new Error('Cancelled');
    const path = '/web/upload?folder=' + encodeURIComponent(job.folder) + '&title=' + encodeURIComponent(job.file.name);
    await send(path, job.file, (part) => { job.progress.value = part; }, job.stopping.signal);
  } catch (error) {
    trouble = error;
  }
  running -= 1;
  end(job, trouble);
  if (trouble && trouble.isOver)
    tell(trouble);
  if (!trouble)
    whenArrived();
  next();
}

function next() {
  while (running < atOnce && waiting.length)
    start(waiting.shift());
}

export function uploadFiles(files, folder) {
  if (!files.length)
    return;
  if (panel && ended === total)
    removePanel();
  showPanel();
  panel.hidden = false;
  for (const file of files) {
    const job = { file, folder, stopping: new AbortController(), ...showRow(file.name) };
    job.stop.addEventListener('click', () => job.stopping.abort());
    waiting.push(job);
    total += 1;
  }
  showHeading();
  next();
}

// Files with paths, such as a chosen folder has: folders are made first, each once.
export async function uploadTree(entries, folder) {
  const made = new Map([['', folder]]);
  const byFolder = new Map();
  try {
    for (const { path, file } of entries) {
      let at = '';
      for (const name of path) {
        const inner = at + '/' + name;
        if (!made.has(inner))
          made.set(inner, (await ask('/web/folder', { title: name, parent: made.get(at) })).id);
        at = inner;
      }
      if (file)
        byFolder.set(at, [...(byFolder.get(at) || []), file]);
    }
  } catch (trouble) {
    tell(trouble);
  }
  whenArrived();
  for (const [at, files] of byFolder)
    uploadFiles(files, made.get(at));
}

function filesOf(directory) {
  return new Promise((resolve, reject) => {
    const reader = directory.createReader();
    const all = [];
    const read = () => reader.readEntries((some) => {
      all.push(...some);
      return some.length ? read() : resolve(all);
    }, reject);
    read();
  });
}

async function walk(entry, path, found) {
  if (entry.isFile) {
    found.push({ path, file: await new Promise((resolve, reject) => entry.file(resolve, reject)) });
    return;
  }
  const inside = [...path, entry.name];
  found.push({ path: inside, file: null });
  for (const child of await filesOf(entry))
    await walk(child, inside, found);
}

// What was dropped: files and folders.
export async function uploadDropped(transfer, folder) {
  const entries = [...transfer.items].map((item) => item.webkitGetAsEntry && item.webkitGetAsEntry()).filter(Boolean);
  if (!entries.some((entry) => entry.isDirectory))
    return uploadFiles([...transfer.files], folder);
  const found = [];
  try {
    for (const entry of entries)
      await walk(entry, [], found);
  } catch (error) {
    return tell(new Error('What was dropped can’t be read.'));
  }
  await uploadTree(found, folder);
}

addEventListener('beforeunload', (event) => {
  if (ended === total)
    return;
  event.preventDefault();
  event.returnValue = ''; // older engines ask only then
});
