// What the pages ask the server for, and small helpers that all scripts need.

const key = document.body.dataset.key;

// Something that went wrong, in words for people. `isOver`: nobody is signed in any more, or the page is out of date.
export class Trouble extends Error {
  constructor(message, isOver = false) {
    super(message);
    this.isOver = isOver;
  }
}

export function make(tag, className = '', text = '') {
  const made = document.createElement(tag);
  if (className)
    made.className = className;
  if (text)
    made.textContent = text;
  return made;
}

export function symbol(name) {
  const drawn = document.createElementNS('http://www.w3.org/2000/svg', 'svg');
  drawn.setAttribute('class', 'symbol');
  drawn.setAttribute('aria-hidden', 'true');
  const use = document.createElementNS('http://www.w3.org/2000/svg', 'use');
  use.setAttribute('href', '#s-' + name);
  drawn.append(use);
  return drawn;
}

// The trouble that a reply tells of.
export function troubleOf(status, answer) {
  const error = (answer && answer.error) || {};
  const reason = error.data && error.data[0] && error.data[0].reason;
  const message = error.message || 'The local Drive answered with error ' + status + '.';
  return new Trouble(message, status === 401 || reason === 'outdated');
}

// Asks with the page's key and resolves to the answer's JSON; with a content, by POST. Throws Trouble.
export async function ask(path, content) {
  let reply;
  try {
    reply = await fetch(path, {
      method: content === undefined ? 'GET' : 'POST',
      headers: { 'X-Web-Key': key, 'Content-Type': 'application/json' },
      body: content === undefined ? undefined : JSON.stringify(content),
    });
  } catch (error) {
    throw new Trouble('The local Drive does not answer. Try again.');
  }
  const answer = await reply.json().catch(() => null);
  if (!reply.ok)
    throw troubleOf(reply.status, answer);
  return answer;
}

// Sends a file as it is. Resolves to the answer; `onProgress` is told the part that was sent, `signal` stops it.
export function send(path, file, onProgress, signal) {
  return new Promise((resolve, reject) => {
    const request = new XMLHttpRequest();
    const fail = (message) => reject(new Trouble(message));
    request.open('POST', path);
    request.responseType = 'json';
    request.setRequestHeader('X-Web-Key', key);
    request.setRequestHeader('Content-Type', file.type || 'application/octet-stream');
    request.upload.onprogress = (event) => onProgress(event.total ? event.loaded / event.total : 1);
    request.onload = () => (request.status === 200 ? resolve(request.response)
      : reject(troubleOf(request.status, request.response)));
    request.onerror = () => fail('The connection broke, or the file can’t be read.');
    request.onabort = () => fail('Cancelled');
    signal.addEventListener('abort', () => request.abort());
    request.send(file);
  });
}
