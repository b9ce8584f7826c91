// The actions as a row of buttons.
import { make, symbol } from '/pages/ask.js';
import { openMenu } from '/pages/menu.js';

export function showActions(actions) {
  const bar = document.getElementById('actions');
  bar.replaceChildren(...actions.map((action) => {
    const button = make('button', 'tool');
    button.type = 'button';
    button.title = action.name + (action.key ? ' (' + action.key + ')' : '');
    button.setAttribute('aria-label', action.name);
    button.append(symbol(action.symbol));
    if (action.items)
      button.setAttribute('aria-haspopup', 'menu');
    button.addEventListener('click', (event) => {
      const place = button.getBoundingClientRect();
      if (action.items)
        openMenu(action.items, place.left, place.bottom + 4, event.detail === 0);
      else
        action.run();
    });
    return button;
  }));
}
