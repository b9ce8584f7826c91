// The page of one file.
import { actionsFor } from '/pages/actions.js';
import { isTyping, sayOnNextPage } from '/pages/page.js';
import { showActions } from '/pages/toolbar.js';

const file = document.getElementById('file');

const notes = { trashed: 'Moved to the trash', restored: 'Restored', deleted: 'Deleted for ever' };

function changed(what) {
  if (notes[what])
    sayOnNextPage(notes[what]);
  if (what === 'deleted')
    location.replace('/drive/trash');
  else
    location.reload();
}

const actions = actionsFor([file], document.body.dataset.place, changed);
if (document.querySelector('.preview.picture, .preview.text')) {
  const address = '/viewer/' + encodeURIComponent(file.dataset.id) + '?print=true';
  actions.splice(2, 0, { name: 'Print', symbol: 'print', run: () => open(address, '_blank', 'noopener') });
}
showActions(actions);

document.addEventListener('keydown', (event) => {
  const action = actions.find(({ key }) => key === event.key);
  if (!action || isTyping(event.target))
    return;
  event.preventDefault();
  action.run();
});
