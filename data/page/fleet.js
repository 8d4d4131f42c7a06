// The list of servers: what the plain table has, with a filter and an order.
import { element } from './text.js';

const SORTS = [
  { name: 'State', keyOf: (row) => row.order },
  { name: 'Server', keyOf: (row) => row.name },
  { name: 'Drives', keyOf: (row) => -row.drives },
  { name: 'What', keyOf: (row) => row.what },
  { name: 'Time', keyOf: (row) => row.time },
];

function readRow(line, order) {
  const [, name, drives, what, time] = [...line.cells].map((cell) => cell.textContent);
  return { line, order, name, drives: Number(drives), what, time,
    state: line.dataset.state, text: `${name}\n${what}`.toLowerCase(), isFound: true,
    data: document.getElementById(`data-${line.dataset.server}`) };
}

function compare(one, other) {
  return typeof one === 'number' ? one - other : one.localeCompare(other, 'en', { numeric: true });
}

// A text as the JSON in the page has it, for whatever case.
function pattern(words) {
  const json = JSON.stringify(words).slice(1, -1)
    .replace(/[<>&]/g, (character) => `\\u00${character.charCodeAt(0).toString(16)}`);
  return new RegExp(json.replace(/[.*+?^${}()|[\]\\]/g, '\\$&'), 'giu');
}

// Whether a value of the JSON has the text. Names do not count: behind their quotes stands a colon.
// The JSON is not read for that, which would take seconds for a thousand servers.
function hasValue(json, words) {
  for (const { index } of json.matchAll(words)) {
    const end = /(?:[^"\\]|\\.)*"(.)/ys;
    end.lastIndex = index;
    if (',}]'.includes(end.exec(json)?.[1] ?? ':')) {
      return true;
    }
  }
  return false;
}

class Fleet {
  constructor(page) {
    this.table = page.querySelector('table.fleet');
    this.rows = [...this.table.tBodies[0].rows].map(readRow);
    this.states = new Set();
    this.counts = new Map();
    this.shown = element('output', { class: 'shown' });
    page.querySelector('header').append(this.searchView());
    page.querySelectorAll('.states li').forEach((entry) => this.makeStateButton(entry));
    this.makeSortButtons();
    for (const { line } of this.rows) {
      line.querySelector('a').href = `#server-${line.dataset.server}`;
    }
    this.filter();
  }

  searchView() {
    const field = element('input', { type: 'search', placeholder: 'Name, problem, serial number, product', autocomplete: 'off',
      on: { input: () => this.search(field.value) } });
    return element('p', { class: 'search' },
      element('label', {}, element('span', {}, 'Find'), field), this.shown);
  }

  search(words) {
    const wanted = words.trim().toLowerCase();
    const sought = pattern(wanted);
    for (const row of this.rows) {
      row.isFound = row.text.includes(wanted) || hasValue(row.data.textContent, sought);
    }
    this.filter();
  }

  makeStateButton(entry) {
    const { state } = entry.dataset;
    const button = element('button', { type: 'button', 'aria-pressed': 'false', on: {
      click: () => {
        const isOn = !this.states.delete(state);
        if (isOn) {
          this.states.add(state);
        }
        button.setAttribute('aria-pressed', String(isOn));
        this.filter();
      },
    } });
    button.append(...entry.childNodes);
    entry.append(button);
    this.counts.set(state, button.querySelector('strong'));
  }

  makeSortButtons() {
    [...this.table.tHead.rows[0].cells].forEach((cell, index) => {
      const button = element('button', { type: 'button', on: { click: () => this.sort(index, cell) } }, SORTS[index].name);
      cell.replaceChildren(button);
    });
    this.table.tHead.rows[0].cells[0].setAttribute('aria-sort', 'ascending');
  }

  sort(index, cell) {
    const isDown = cell.getAttribute('aria-sort') === 'ascending';
    for (const other of this.table.tHead.rows[0].cells) {
      other.removeAttribute('aria-sort');
    }
    cell.setAttribute('aria-sort', isDown ? 'descending' : 'ascending');
    const { keyOf } = SORTS[index];
    this.rows.sort((one, other) =>
      (isDown ? -1 : 1) * compare(keyOf(one), keyOf(other)) || one.order - other.order);
    this.table.tBodies[0].append(...this.rows.map(({ line }) => line));
  }

  // The counts are of what was found; the states choose from that.
  filter() {
    const counts = new Map();
    let shown = 0;
    for (const row of this.rows) {
      const isShown = row.isFound && (this.states.size === 0 || this.states.has(row.state));
      row.line.hidden = !isShown;
      shown += isShown ? 1 : 0;
      counts.set(row.state, (counts.get(row.state) ?? 0) + (row.isFound ? 1 : 0));
    }
    for (const [state, text] of this.counts) {
      text.textContent = counts.get(state);
    }
    this.shown.textContent = shown === this.rows.length ? '' : `${shown} of ${this.rows.length} shown`;
  }
}

export const enrichFleet = (page) => new Fleet(page);
