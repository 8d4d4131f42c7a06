// An enclosure as a row of drive bays, and the light that shows what belongs together.
import { counted, element, healthClass, joined, listed, sign } from './text.js';

function progressBar(drive) {
  if (drive.percent === null) {
    return null;
  }
  const bar = element('span', { class: 'progress' }, element('span'));
  bar.firstChild.style.inlineSize = `${drive.percent}%`;
  return bar;
}

function driveBay(drive, isFirst, groupIndex, show) {
  const word = drive.percent === null ? drive.word : `${drive.percent}%`;
  return element(
    'button',
    {
      type: 'button',
      class: `bay ${healthClass(drive.health)}`,
      tabindex: isFirst ? 0 : -1,
      'data-drive': drive.index,
      'data-group': groupIndex,
      on: { click: () => show(drive) },
    },
    element('span', { class: 'unseen' },
      joined([drive.health === 'OK' ? '' : drive.health, ...drive.facts], ', ')),
    element('span', { class: 'slot', 'aria-hidden': 'true' }, drive.slot ?? ''),
    sign(drive.health, drive.letter),
    element('span', { class: 'word', 'aria-hidden': 'true' }, word),
    element('span', { class: 'group', 'aria-hidden': 'true' }, drive.groupText),
    progressBar(drive),
  );
}

function emptyBay({ first, last }) {
  const isOne = first === last;
  return element(
    'span',
    { class: 'bay is-empty' },
    element('span', { class: 'slot' }, isOne ? first : `${first}–${last}`),
    element('span', { class: 'word' }, isOne ? 'empty' : `${last - first + 1} empty`),
  );
}

function summary({ drives, bays }) {
  const states = new Map();
  for (const drive of drives) {
    states.set(drive.state, (states.get(drive.state) ?? 0) + 1);
  }
  const empty = bays.filter((bay) => bay.isEmpty).reduce((sum, gap) => sum + gap.last - gap.first + 1, 0);
  return element('span', { class: 'summary' }, listed([
    counted(drives.length, 'drive'),
    ...[...states].map(([state, count]) => `${count} ${state}`),
    empty && `${empty} empty`,
  ]));
}

// Arrows, Home and End go from bay to bay; Tab leaves the row.
function steps(row, event) {
  const bays = [...row.querySelectorAll('button.bay')];
  const at = bays.indexOf(event.target.closest('button.bay'));
  const { left, top } = bays[at].getBoundingClientRect();
  const column = (isBelow) =>
    (isBelow ? bays.slice(at) : bays.slice(0, at).reverse()).find((bay) => {
      const box = bay.getBoundingClientRect();
      return Math.abs(box.left - left) < 2 && Math.abs(box.top - top) > 2;
    });
  return {
    ArrowLeft: () => bays[at - 1],
    ArrowRight: () => bays[at + 1],
    ArrowUp: () => column(false),
    ArrowDown: () => column(true),
    Home: () => bays[0],
    End: () => bays.at(-1),
  }[event.key];
}

function onKey(row, event) {
  const step = steps(row, event);
  if (!step) {
    return;
  }
  event.preventDefault();
  const bay = step();
  if (bay) {
    row.querySelector('[tabindex="0"]').tabIndex = -1;
    bay.tabIndex = 0;
    bay.focus();
  }
}

// Tells of the drive that is pointed at, or focused, in the line below the row.
function tell(row, line, drives, quiet, event) {
  const bay = event.target.closest('button.bay');
  const drive = bay && drives[bay.dataset.drive];
  line.textContent = '';
  line.append(...(drive ? [sign(drive.health), element('span', {}, listed(drive.facts))] : [quiet]));
  line.className = `readout ${drive ? healthClass(drive.health) : ''}`;
  row.closest('.controller').dispatchEvent(
    new CustomEvent('pointed', { detail: bay ? bay.dataset.group : undefined }));
}

// Rows of the same length, as the front of an enclosure has them.
const balance = new ResizeObserver((entries) => {
  const rem = parseFloat(getComputedStyle(document.documentElement).fontSize);
  const gap = 0.375;
  for (const { target, contentRect } of entries) {
    const row = target.querySelector('.bays');
    const count = row.children.length;
    const most = Math.max(1, Math.floor((contentRect.width / rem + gap) / (3.5 + gap)));
    const columns = Math.ceil(count / Math.ceil(count / most));
    row.style.setProperty('--columns', `repeat(${columns}, minmax(0, 4.5rem))`);
  }
});

export function enclosureView(enclosure, server, groupIndexOf, show) {
  const quiet = summary(enclosure);
  const firstDrive = enclosure.bays.find((bay) => !bay.isEmpty);
  const bays = enclosure.bays.map((bay) =>
    element('li', { class: bay.isEmpty && bay.first !== bay.last ? 'is-wide' : null },
      bay.isEmpty ? emptyBay(bay) : driveBay(bay, bay === firstDrive, groupIndexOf(bay), show)));
  const row = element('ul', { class: 'bays' }, bays);
  const line = element('p', { class: 'readout' }, quiet);
  row.addEventListener('keydown', (event) => onKey(row, event));
  for (const event of ['pointerover', 'focusin']) {
    row.addEventListener(event, (told) => tell(row, line, server.drives, quiet, told));
  }
  for (const event of ['pointerleave', 'focusout']) {
    row.addEventListener(event, () => tell(row, line, server.drives, quiet, { target: row }));
  }
  const view = element('section', { class: 'enclosure' }, element('h3', {}, enclosure.title), row, line);
  balance.observe(view);
  return view;
}

// Lights the drives of the group that a button stands for and dims all others; pressed again, all
// are as they were.
export function light(view, pressed) {
  const isOn = pressed.getAttribute('aria-pressed') === 'false';
  view.classList.toggle('is-lighting', isOn);
  for (const part of view.querySelectorAll('[data-group]')) {
    part.classList.toggle('is-lit', isOn && part.dataset.group === pressed.dataset.group);
  }
  for (const button of view.querySelectorAll('button[aria-pressed]')) {
    button.setAttribute('aria-pressed', String(isOn && button === pressed));
  }
}
