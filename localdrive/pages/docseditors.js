// What one sees and changes of each kind of native document. An editor is made from (place, state, changed), calls
// changed() with every key, and has content(): what the server keeps.

export function make(tag, className, text = '') {
  const made = document.createElement(tag);
  if (className)
    made.className = className;
  made.textContent = text;
  return made;
}

function field(tag, label, value, isReadOnly, changed) {
  const made = make(tag, '');
  made.setAttribute('aria-label', label);
  made.placeholder = label;
  made.value = value;
  made.readOnly = isReadOnly;
  made.addEventListener('input', changed);
  return made;
}

function button(label, action) {
  const made = make('button', '', label);
  made.type = 'button';
  made.addEventListener('click', action);
  return made;
}

function firstSection(state) {
  return (state.content.sections || [])[0] || { title: '', text: '' };
}

// One text on a sheet that grows with it.
function documentEditor(place, state, changed) {
  const text = field('textarea', 'Write here', firstSection(state).text, !state.canEdit, () => {
    grow();
    changed();
  });
  text.className = 'sheet';
  const grow = () => {
    const top = document.scrollingElement.scrollTop;
    text.style.height = 'auto';
    text.style.height = text.scrollHeight + 2 + 'px';
    document.scrollingElement.scrollTop = top;
  };
  place.append(text);
  grow();
  addEventListener('resize', grow);
  text.focus({ preventScroll: true });
  return { content: () => ({ sections: [{ title: '', text: text.value }] }) };
}

function columnName(column) {
  const letter = String.fromCharCode(65 + column % 26);
  return column < 26 ? letter : columnName(Math.floor(column / 26) - 1) + letter;
}

// Cells of text. There are always some more than are in use.
function spreadsheetEditor(place, state, changed) {
  const mostRows = 1000;
  const mostColumns = 52;
  const rows = state.content.rows || [];
  const body = make('tbody', '');
  const head = make('tr', '');
  let columns = 0;

  const cellAt = (row, column) => body.rows[row] && body.rows[row].cells[column + 1] &&
    body.rows[row].cells[column + 1].firstChild;
  const placeOf = (cell) => [cell.closest('tr').sectionRowIndex, cell.parentElement.cellIndex - 1];

  function addCell(line, row, column, value) {
    const cell = make('input', '');
    cell.type = 'text';
    cell.value = value.replaceAll('\n', ' ');
    cell.whole = value; // with the line ends that a field can't show, until it is changed
    cell.readOnly = !state.canEdit;
    cell.setAttribute('aria-label', columnName(column) + (row + 1));
    const box = make('td', '');
    box.append(cell);
    line.append(box);
  }

  function growTo(rowCount, columnCount) {
    for (; columns < Math.min(columnCount, mostColumns); ++columns) {
      head.append(make('th', '', columnName(columns)));
      for (const line of body.rows)
        addCell(line, line.sectionRowIndex, columns, '');
    }
    while (body.rows.length < Math.min(rowCount, mostRows)) {
      const row = body.rows.length;
      const line = body.insertRow();
      line.append(make('th', '', String(row + 1)));
      for (let column = 0; column < columns; ++column)
        addCell(line, row, column, (rows[row] || [])[column] || '');
    }
  }

  function growAround(row, column) {
    growTo(row + 6 > body.rows.length ? row + 20 : 0, column + 2 > columns ? column + 6 : 0);
  }

  function move(event, rowStep, columnStep) {
    const [row, column] = placeOf(event.target);
    const cell = cellAt(row + rowStep, column + columnStep);
    if (!cell)
      return;
    event.preventDefault();
    cell.focus();
    cell.select();
  }

  body.addEventListener('input', (event) => {
    event.target.whole = event.target.value;
    growAround(...placeOf(event.target));
    changed();
  });
  body.addEventListener('keydown', (event) => {
    const { selectionStart, selectionEnd, value } = event.target;
    const isWhole = selectionStart === 0 && selectionEnd === value.length;
    if (event.key === 'Enter')
      move(event, event.shiftKey ? -1 : 1, 0);
    else if (event.key === 'ArrowDown')
      move(event, 1, 0);
    else if (event.key === 'ArrowUp')
      move(event, -1, 0);
    else if (event.key === 'ArrowRight' && (isWhole || selectionStart === value.length))
      move(event, 0, 1);
    else if (event.key === 'ArrowLeft' && (isWhole || selectionEnd === 0))
      move(event, 0, -1);
  });
  // A table from elsewhere spreads over the cells.
  body.addEventListener('paste', (event) => {
    const text = event.clipboardData.getData('text/plain').replace(/\r\n?/g, '\n').replace(/\n$/, '');
    if (!state.canEdit || !/[\t\n]/.test(text))
      return;
    event.preventDefault();
    const [top, left] = placeOf(event.target);
    const lines = text.split('\n').map((line) => line.split('\t'));
    growTo(top + lines.length + 1, left + Math.max(...lines.map((line) => line.length)) + 1);
    lines.forEach((line, row) => line.forEach((value, column) => {
      const cell = cellAt(top + row, left + column);
      if (cell)
        cell.value = cell.whole = value;
    }));
    changed();
  });

  head.append(make('th', ''));
  const widest = rows.reduce((most, row) => Math.max(most, row.length), 0);
  growTo(0, Math.max(12, widest + 2));
  growTo(Math.max(40, rows.length + 10), 0);
  const table = make('table', '');
  const header = make('thead', '');
  header.append(head);
  table.append(header, body);
  place.append(table);
  cellAt(0, 0).focus({ preventScroll: true });
  const cellsOf = (line) => [...line.querySelectorAll('input')].map((cell) => cell.whole);
  return { content: () => ({ rows: [...body.rows].map(cellsOf) }) };
}

// The slides in their order, and one of them to write on.
function presentationEditor(place, state, changed) {
  const mostSlides = 200;
  const slides = (state.content.sections || []).map((section) => ({ ...section }));
  if (slides.length === 0)
    slides.push({ title: '', text: '' });
  let current = 0;

  const title = field('input', 'Title', '', !state.canEdit, () => write('title', title.value));
  title.type = 'text';
  const text = field('textarea', 'Text', '', !state.canEdit, () => write('text', text.value));
  const list = make('ol', '');
  const tools = make('div', 'tools');
  const add = button('New slide', () => {
    slides.splice(current + 1, 0, { title: '', text: '' });
    rearrange(current + 1);
    title.focus();
  });
  const up = button('Move up', () => swapWith(current - 1));
  const down = button('Move down', () => swapWith(current + 1));
  const remove = button('Delete', () => {
    slides.splice(current, 1);
    rearrange(Math.min(current, slides.length - 1));
  });

  function write(key, value) {
    slides[current][key] = value;
    label(list.children[current], slides[current]);
    changed();
  }

  function label(item, slide) {
    const words = slide.title || slide.text.split('\n')[0] || 'Empty slide';
    item.firstChild.textContent = words;
    item.firstChild.classList.toggle('faint', words === 'Empty slide');
  }

  function swapWith(other) {
    [slides[current], slides[other]] = [slides[other], slides[current]];
    rearrange(other);
  }

  function rearrange(chosen) {
    show(chosen);
    changed();
  }

  function show(chosen) {
    current = chosen;
    list.replaceChildren(...slides.map((slide, index) => {
      const item = make('li', '');
      item.append(button('', () => show(index)));
      item.firstChild.className = 'cut';
      if (index === current)
        item.firstChild.setAttribute('aria-current', 'true');
      label(item, slide);
      return item;
    }));
    list.children[current].scrollIntoView({ block: 'nearest' });
    title.value = slides[current].title;
    text.value = slides[current].text;
    add.disabled = slides.length >= mostSlides;
    up.disabled = current === 0;
    down.disabled = current === slides.length - 1;
    remove.disabled = slides.length === 1;
  }

  const side = make('div', 'side');
  const slide = make('div', 'slide');
  tools.append(add, up, down, remove);
  side.append(list);
  if (state.canEdit)
    side.prepend(tools);
  slide.append(title, text);
  place.append(side, slide);
  show(0);
  title.focus({ preventScroll: true });
  return { content: () => ({ sections: slides }) };
}

function titleAndText(state, changed, titleLabel, textLabel) {
  const section = firstSection(state);
  const title = field('input', titleLabel, section.title, !state.canEdit, changed);
  title.type = 'text';
  title.className = 'title';
  const text = field('textarea', textLabel, section.text, !state.canEdit, changed);
  const card = make('div', 'fields');
  card.append(title, text);
  return { card, content: () => ({ sections: [{ title: title.value, text: text.value }] }) };
}

// The words, and the drawing that is made of them.
function drawingEditor(place, state, changed) {
  const words = titleAndText(state, changed, 'Title', 'Text');
  const picture = make('img', '');
  picture.alt = 'The drawing';
  const id = encodeURIComponent(state.id);
  const draw = (revision) => {
    picture.src = '/docs/drawings/d/' + id + '/export/svg?id=' + id + '&revision=' + revision;
  };
  draw(state.revision);
  const frame = make('div', 'picture');
  frame.append(picture);
  place.append(words.card, frame);
  return { content: words.content, saved: draw };
}

function formEditor(place, state, changed) {
  const words = titleAndText(state, changed, 'Title of the form', 'What it asks for');
  place.append(words.card);
  return { content: words.content };
}

export const editors = {
  document: documentEditor,
  spreadsheets: spreadsheetEditor,
  presentation: presentationEditor,
  drawings: drawingEditor,
  forms: formEditor,
};
