// Boxes that ask something, notes in the corner, and the sharing dialog in a frame.
import { make } from '/pages/ask.js';

export function corner() {
  let place = document.getElementById('corner');
  if (!place) {
    place = make('div');
    place.id = 'corner';
    document.body.append(place);
  }
  return place;
}

let note = null;

// A note that goes by itself; with an action it waits longer, and the action's button does it.
export function say(text, action) {
  if (note)
    note.remove();
  note = make('div', 'note-box');
  note.setAttribute('role', 'status');
  const words = make('span', '', text);
  note.append(words);
  if (action) {
    const button = make('button', '', action.name);
    button.type = 'button';
    button.addEventListener('click', () => { shown.remove(); action.run(); });
    note.append(button);
  } else {
    words.style.paddingRight = '0.6rem';
  }
  const shown = note;
  corner().append(note);
  setTimeout(() => shown.remove(), action ? 10000 : 5000);
}

// Says what went wrong; when the session is over, with the way back in.
export function tell(trouble) {
  if (trouble.isOver)
    say(trouble.message, { name: 'Go on', run: () => location.reload() });
  else
    say(trouble.message);
}

function open(box) {
  document.body.append(box);
  box.addEventListener('close', () => box.remove());
  box.showModal();
}

function question(heading, button, isDanger) {
  const box = make('dialog');
  const form = make('form', 'question');
  form.method = 'dialog';
  const title = make('h2', '', heading);
  title.id = 'question';
  box.setAttribute('aria-labelledby', title.id);
  const buttons = make('div', 'buttons');
  const yes = make('button', isDanger ? 'danger' : 'primary', button);
  yes.value = 'yes';
  const no = make('button', '', 'Cancel');
  no.value = '';
  no.formNoValidate = true;
  buttons.append(yes, no);
  form.append(title, buttons);
  box.append(form);
  return { box, form, buttons, no };
}

// Resolves to whether it was confirmed.
export function confirmBox({ heading, text, button, isDanger = false }) {
  return new Promise((resolve) => {
    const { box, buttons, no } = question(heading, button, isDanger);
    buttons.before(make('p', '', text));
    box.addEventListener('close', () => resolve(box.returnValue === 'yes'));
    open(box);
    if (isDanger)
      no.focus();
  });
}

// Resolves to what was entered, or null. Of a file's name, the part before its extension is selected.
export function askText({ heading, label, value = '', button }) {
  return new Promise((resolve) => {
    const { box, buttons } = question(heading, button, false);
    const input = make('input');
    input.type = 'text';
    input.required = true;
    input.maxLength = 1000;
    input.value = value;
    input.autocomplete = 'off';
    input.setAttribute('aria-label', label);
    buttons.before(input);
    box.addEventListener('close', () => {
      const entered = input.value.trim();
      resolve(box.returnValue === 'yes' && entered ? entered : null);
    });
    open(box);
    const dot = value.lastIndexOf('.');
    input.focus();
    input.setSelectionRange(0, dot > 0 ? dot : value.length);
  });
}

// The sharing dialog is a page of its own. It is shown when it has been measured, and goes when it has removed itself.
export function shareBox(id) {
  return new Promise((resolve) => {
    const box = make('dialog', 'share');
    box.setAttribute('aria-label', 'Share');
    const frame = make('iframe');
    frame.title = 'Share';
    frame.src = '/sharing/share?id=' + encodeURIComponent(id);
    frame.addEventListener('load', () => {
      const inside = frame.contentDocument;
      const dialog = inside.querySelector('.dialog');
      if (!dialog)
        return box.close();
      frame.style.height = Math.ceil(dialog.getBoundingClientRect().height) + 40 + 'px';
      inside.addEventListener('keydown', (event) => { if (event.key === 'Escape') box.close(); });
      new MutationObserver(() => { if (!inside.querySelector('.dialog')) box.close(); })
        .observe(inside.body, { childList: true });
      const first = inside.querySelector('[autofocus]:enabled');
      if (first)
        first.focus();
    });
    box.addEventListener('click', (event) => { if (event.target === box) box.close(); });
    box.addEventListener('close', () => resolve());
    box.append(frame);
    open(box);
  });
}
