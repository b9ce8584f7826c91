// The page of a native document: its name, its menu, and what it holds, which is saved while one writes.
import { editors, make } from '/pages/docseditors.js';

const state = JSON.parse(document.body.dataset.state);
const element = (id) => document.getElementById(id);
const savePause = 700; // milliseconds without a key before what was written is saved
const longestRetry = 30000;
const largestLastWords = 60000; // what browsers still send for a page that goes away, in bytes

let revision = state.revision;
let isDirty = false; // there is something that no request holds yet
let isSaving = false;
let isStopped = false; // somebody else changed the document
let hasFailed = false;
let retryPause = 0;
let timer = 0;

function say(text, isTrouble = false) {
  element('saved').textContent = text;
  element('saved').classList.toggle('trouble', isTrouble);
}

// Shows a line below the bar, with buttons: [text, what to do], ...
function hint(text, ...choices) {
  const line = element('hint');
  line.hidden = text === '';
  line.replaceChildren(make('span', '', text), ...choices.map(([label, action]) => {
    const button = make('button', '', label);
    button.type = 'button';
    button.addEventListener('click', action);
    return button;
  }));
}

// Resolves to {status, answer}; status 0 when there was no answer.
async function ask(method, what, content, isLast = false) {
  try {
    const reply = await fetch('/docs/files/' + encodeURIComponent(state.id) + '/' + what, {
      method,
      keepalive: isLast,
      headers: { 'X-Web-Key': document.body.dataset.key, 'Content-Type': 'application/json' },
      body: content && JSON.stringify(content),
    });
    return { status: reply.status, answer: await reply.json() };
  } catch (error) {
    return { status: 0, answer: { error: { message: 'The local Drive does not answer.' } } };
  }
}

function request() {
  return { revision, content: editor.content() };
}

function later(pause) {
  clearTimeout(timer);
  timer = setTimeout(save, pause);
}

function changed() {
  isDirty = true;
  if (isStopped)
    return;
  say('Saving…');
  later(savePause);
}

async function save() {
  clearTimeout(timer);
  if (isSaving || isStopped || !isDirty)
    return;
  isSaving = true;
  isDirty = false;
  const { status, answer } = await ask('PUT', 'content', request());
  isSaving = false;
  hasFailed = status !== 200;
  if (!hasFailed) {
    revision = answer.revision;
    retryPause = 0;
    if (isDirty)
      return later(savePause);
    say('All changes are saved');
    editor.saved?.(revision);
    return;
  }
  isDirty = true;
  if (status === 412)
    return refuse();
  say('Not saved. ' + answer.error.message, true);
  if (status === 0 || status >= 500) {
    retryPause = Math.min(retryPause * 2 || 1000, longestRetry);
    later(retryPause);
  }
}

// Nobody's words are thrown away unasked.
function refuse() {
  isStopped = true;
  say('Not saved', true);
  hint('This was changed somewhere else meanwhile.',
    ['Show the other version', () => {
      isDirty = false;
      location.reload();
    }],
    ['Keep this one', async () => {
      const { status, answer } = await ask('GET', 'content');
      if (status !== 200)
        return say(answer.error.message, true);
      revision = answer.revision;
      isStopped = false;
      hint('');
      changed();
    }]);
}

// Resolves when what was written so far is saved, or can't be.
async function flush() {
  while (isSaving)
    await new Promise((resolve) => setTimeout(resolve, 20));
  await save();
}

async function rename() {
  const name = element('name');
  const title = name.value.trim();
  if (title === state.title || title === '') {
    name.value = state.title;
    return;
  }
  const { status, answer } = await ask('PUT', 'title', { title });
  if (status !== 200)
    return say(answer.error.message, true);
  state.title = answer.title;
  name.value = state.title;
  document.title = state.title + state.suffix;
  say('Renamed');
}

async function trash(verb) {
  const { status, answer } = await ask('POST', verb);
  if (status !== 200)
    return say(answer.error.message, true);
  state.trashed = answer.trashed;
  showTrash();
}

function showTrash() {
  element('trash').hidden = state.trashed || !state.canTrash;
  if (!state.trashed)
    return hint('');
  if (state.canTrash)
    hint('This file is in the trash.', ['Restore', () => trash('untrash')]);
  else
    hint('This file is in the trash.');
}

async function copy() {
  await flush();
  const { status, answer } = await ask('POST', 'copy');
  if (status !== 200)
    return say(answer.error.message, true);
  location.href = answer.link;
}

const editor = editors[state.kind](element('editor'), state, changed);
const menu = document.querySelector('.menu');

element('name').readOnly = !state.canEdit;
element('name').addEventListener('change', rename);
element('name').addEventListener('keydown', (event) => {
  if (event.key === 'Escape')
    element('name').value = state.title;
  if (event.key === 'Enter' || event.key === 'Escape')
    element('name').blur();
});
element('copy').addEventListener('click', copy);
element('trash').addEventListener('click', () => trash('trash'));
showTrash();
if (!state.canEdit)
  say('You can read this, but not change it');

// What is downloaded or printed is what one sees.
menu.addEventListener('click', async (event) => {
  const link = event.target.closest('a');
  if (!link && !event.target.closest('button'))
    return;
  menu.open = false;
  if (link && (isDirty || isSaving) && !hasFailed) {
    event.preventDefault();
    await flush();
    link.click();
  }
});
addEventListener('click', (event) => {
  if (!menu.contains(event.target))
    menu.open = false;
});
addEventListener('keydown', (event) => {
  if (event.key === 'Escape' && menu.open) {
    menu.open = false;
    menu.querySelector('summary').focus();
  }
  if (event.key === 's' && (event.ctrlKey || event.metaKey)) {
    event.preventDefault();
    save();
  }
});

// Leaving loses nothing: small texts are sent on the way out, for others the browser asks.
addEventListener('pagehide', () => {
  if (isDirty && !isStopped)
    ask('PUT', 'content', request(), true);
});
addEventListener('beforeunload', (event) => {
  const isUnsaved = isDirty || isSaving;
  if (isUnsaved && (hasFailed || JSON.stringify(request()).length * 3 > largestLastWords)) {
    event.preventDefault();
    event.returnValue = ''; // how older engines are told
  }
});
