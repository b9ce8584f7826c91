// The sharing dialog. Everything that it changes is on the server before it is shown here.
'use strict';

const dialog = document.querySelector('.dialog');
const element = (id) => document.getElementById(id);
const roles = { reader: 'Can view', commenter: 'Can comment', writer: 'Can edit', owner: 'Owner' };

let state = dialog.dataset.state ? JSON.parse(dialog.dataset.state) : null;
let lastRequest = 0;

function make(tag, className, text) {
  const made = document.createElement(tag);
  made.className = className;
  made.textContent = text;
  return made;
}

function say(text, isTrouble = false) {
  const status = element('status');
  status.textContent = text;
  status.title = text;
  status.classList.toggle('trouble', isTrouble);
}

// Asks for a change and shows what there is afterwards. Resolves to whether it was done.
async function ask(method, id, content, doneText) {
  const number = ++lastRequest;
  dialog.setAttribute('aria-busy', 'true');
  let trouble = '';
  try {
    const reply = await fetch('/sharing/permissions' + (id ? '/' + encodeURIComponent(id) : ''), {
      method,
      headers: { 'X-Share-Key': dialog.dataset.key, 'Content-Type': 'application/json' },
      body: content && JSON.stringify(content),
    });
    const answer = await reply.json();
    if (reply.ok && number === lastRequest)
      state = answer;
    if (!reply.ok)
      trouble = answer.error.message;
  } catch (error) {
    trouble = 'The local Drive does not answer. Try again.';
  }
  if (number === lastRequest) {
    dialog.removeAttribute('aria-busy');
    show();
    say(trouble || doneText, trouble !== '');
  }
  return trouble === '';
}

function roleChooser(person) {
  const chooser = element('role').cloneNode(true);
  chooser.removeAttribute('id');
  chooser.setAttribute('aria-label', 'What ' + person.name + ' can do');
  chooser.value = person.role;
  chooser.addEventListener('change', async () => {
    await ask('PUT', person.id, { role: chooser.value }, person.name + ': ' + roles[chooser.value].toLowerCase());
    focusOn(person.id, 'select');
  });
  return chooser;
}

function removeButton(person) {
  const button = make('button', 'remove', '×');
  button.type = 'button';
  button.title = 'Remove ' + person.name;
  button.setAttribute('aria-label', button.title);
  button.addEventListener('click', async () => {
    await ask('DELETE', person.id, null, person.name + ' has no access any more');
    element('people').focus();
  });
  return button;
}

function row(person) {
  const line = make('li', '', '');
  line.dataset.id = person.id;
  const face = make('span', 'face', person.name.charAt(0).toUpperCase());
  face.setAttribute('aria-hidden', 'true');
  const words = make('span', 'words', '');
  words.append(make('span', 'cut', person.name + (person.isYou ? ' (you)' : '')));
  if (person.email && person.email !== person.name)
    words.append(make('span', 'cut faint', person.email));
  line.append(face, words);
  if (state.canShare && person.role !== 'owner' && !person.isYou)
    line.append(roleChooser(person), removeButton(person));
  else
    line.append(make('span', 'faint', roles[person.role]));
  return line;
}

// Rows are made anew with each answer; whoever was at one of them stays there.
function focusOn(id, selector) {
  const line = [...element('list').children].find((child) => child.dataset.id === id);
  const control = line && line.querySelector(selector);
  if (control)
    control.focus();
}

function show() {
  element('list').replaceChildren(...state.people.map(row));
  element('linkrole').value = state.linkRole;
  for (const id of ['people', 'role', 'linkrole'])
    element(id).disabled = !state.canShare;
  element('add').querySelector('button').disabled = !state.canShare;
}

async function addPeople(event) {
  event.preventDefault();
  const people = element('people');
  const added = people.value.trim();
  if (await ask('POST', '', { people: added, role: element('role').value }, 'Shared with ' + added)) {
    people.value = '';
    element('list').lastElementChild.scrollIntoView({ block: 'nearest' });
  }
  people.focus();
}

async function changeLink() {
  const role = element('linkrole').value;
  const text = role === 'off' ? 'The link is off' : 'Anyone with the link ' + roles[role].toLowerCase();
  await (role === 'off' ? ask('DELETE', 'anyoneWithLink', null, text) : ask('PUT', 'anyoneWithLink', { role }, text));
}

async function copyLink() {
  const link = element('link');
  try {
    await navigator.clipboard.writeText(link.value);
  } catch (error) {
    link.focus();
    link.select();
    if (!document.execCommand('copy'))
      return say('Copy the link with Ctrl+C', true);
  }
  say('The link is copied');
}

// The window around the dialog closes when there is no dialog any more.
function finish() {
  document.body.replaceChildren(make('p', 'afterwards', 'You can close this window.'));
  window.close();
}

element('done').addEventListener('click', finish);
if (state) {
  element('add').addEventListener('submit', addPeople);
  element('linkrole').addEventListener('change', changeLink);
  element('copy').addEventListener('click', copyLink);
  element('link').addEventListener('focus', () => element('link').select());
  show();
  if (!state.canShare)
    say('You can see who has access, but not change it.');
}
