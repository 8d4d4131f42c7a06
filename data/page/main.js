// What is shown: the server that the page is about; or the list of servers, and the one that was
// chosen.
import { enrichFleet } from './fleet.js';
import { readServer } from './model.js';
import { serverView } from './server.js';
import { element } from './text.js';

const page = document.getElementById('page');

function viewOf(index) {
  return serverView(readServer(JSON.parse(document.getElementById(`data-${index}`).textContent)));
}

// The server whose number stands in the address, beside the hidden list.
class Chosen {
  constructor() {
    this.list = element('div', { class: 'list' });
    this.list.append(...page.childNodes);
    this.place = element('div', { class: 'chosen' });
    page.append(this.list, this.place);
    this.title = document.title;
    window.addEventListener('hashchange', () => this.show());
    this.show();
  }

  show() {
    const index = /^#server-(\d+)$/.exec(location.hash)?.[1];
    const isOpen = index !== undefined && document.getElementById(`data-${index}`) !== null;
    if (isOpen) {
      this.open(index);
    } else {
      this.close();
    }
  }

  open(index) {
    if (!this.list.hidden) {
      this.scroll = window.scrollY;
    }
    this.index = index;
    const back = element('nav', {}, element('a', { href: '#', class: 'back' }, '← All servers'));
    this.place.replaceChildren(back, ...viewOf(index));
    this.list.hidden = true;
    const heading = this.place.querySelector('h1');
    document.title = heading.textContent;
    window.scrollTo(0, 0);
    heading.focus();
  }

  close() {
    this.place.replaceChildren();
    this.list.hidden = false;
    document.title = this.title;
    if (this.index !== undefined) {
      this.list.querySelector(`tr[data-server="${this.index}"] a`).focus();
      window.scrollTo(0, this.scroll ?? 0);
    }
    this.index = undefined;
  }
}

if (document.body.dataset.kind === 'fleet') {
  enrichFleet(page);
  new Chosen();
} else {
  page.replaceChildren(...viewOf(0));
}
