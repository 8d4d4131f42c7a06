// What stands in the page comes from reports of unknown origin: it becomes text nodes and values of
// attributes, never markup, and what would be invisible in it is made visible.

const HIDDEN = /[\p{C}\p{Zl}\p{Zp}]/gu;

function escaped(character) {
  const code = character.codePointAt(0).toString(16);
  return code.length > 2 ? `\\u{${code}}` : `\\x${code.padStart(2, '0')}`;
}

export const visible = (text) => text.replace(HIDDEN, escaped);

// An element. Of the attributes, "on" has listeners; those that are null or false are left out.
// Children are elements or texts; empty ones are left out.
export function element(tag, attributes = {}, ...children) {
  return furnished(document.createElement(tag), attributes, children);
}

export function drawing(tag, attributes = {}, ...children) {
  return furnished(document.createElementNS('http://www.w3.org/2000/svg', tag), attributes, children);
}

function furnished(made, { on = {}, ...attributes }, children) {
  for (const [name, value] of Object.entries(attributes)) {
    if (value !== null && value !== false) {
      made.setAttribute(name, visible(String(value)));
    }
  }
  for (const [event, listener] of Object.entries(on)) {
    made.addEventListener(event, listener);
  }
  for (const child of children.flat(Infinity)) {
    if (child || child === 0) {
      made.append(child instanceof Node ? child : visible(String(child)));
    }
  }
  return made;
}

// The sign of a health with a letter in it, or none.
export function sign(health, letter = '') {
  const shape = drawing('use', { href: `#${healthClass(health)}` });
  const inside = letter && drawing('text', { x: 12, y: health === 'WARNING' ? 19 : 16.2 }, letter);
  return drawing('svg', { class: 'sign', viewBox: '0 0 24 24', 'aria-hidden': 'true' }, shape, inside);
}

const CLASSES = { OK: 'is-ok', WARNING: 'is-warning', CRITICAL: 'is-critical' };

export const healthClass = (health) =>
  Object.hasOwn(CLASSES, health) ? CLASSES[health] : 'is-unknown';

// The number stays on the line of its noun.
export const counted = (count, noun) => `${count}\u00A0${noun}${count === 1 ? '' : 's'}`;

// The texts that there are as parts of a line, of which none turns the order of the others.
export const listed = (texts) =>
  texts.filter(Boolean).flatMap((text, i) => [i > 0 && ' · ', element('bdi', {}, text)]);

// The same as one text, a separator between them.
export const joined = (texts, separator = ' · ') => texts.filter(Boolean).join(separator);
