// The whole record of a drive, in a dialogue.
import { listOf, objectOf, sectionsOf, textOf } from './model.js';
import { drawing, element, healthClass, joined, sign } from './text.js';

export function facts(pairs) {
  const told = pairs.filter(([, value]) => value !== '');
  return told.length
    ? element('dl', { class: 'facts' },
        told.map(([name, value]) =>
          element('div', {}, element('dt', {}, name), element('dd', {}, value))))
    : null;
}

export function sections(device, title) {
  const told = sectionsOf(device);
  if (told.length === 0) {
    return null;
  }
  return element('details', { class: 'sections' }, element('summary', {}, title),
    told.map((section) => [element('h4', {}, section.title || 'Without a title'), facts(section.lines)]));
}

const driveFacts = ({ device, role, group }) => [
  ['State', joined([textOf(device.status_detail), textOf(device.progress)], ' ')],
  ['Group', joined([group, role], ' · ')],
  ['Product', joined([textOf(device.vendor), textOf(device.product)], ' ')],
  ['Capacity', textOf(device.capacity)],
  ['Kind', joined([textOf(device.interface_type), textOf(device.media_type), textOf(device.speed)])],
  ['WWN', textOf(device.wwn)],
  ['Revision', textOf(device.revision)],
  ['Temperature', textOf(device.temperature)],
  ['Power', textOf(device.power)],
  ['Media errors', textOf(device.media_error_count)],
  ['Other errors', textOf(device.other_error_count)],
  ['Predictive failures', textOf(device.predictive_failure_count)],
];

const BAR = 200;

// How far an attribute is from its threshold. The current value of a SATA drive falls to it, the
// counter of a SAS drive rises to it.
function measured({ current, value, threshold }) {
  if (!(threshold > 0)) {
    return Number.isFinite(current) ? { part: current / Math.max(current, 100), isOver: false } : null;
  }
  if (Number.isFinite(current)) {
    const full = Math.max(current, threshold, 100);
    return { part: current / full, mark: threshold / full, isOver: current <= threshold };
  }
  return Number.isFinite(value)
    ? { part: Math.min(1, value / threshold), mark: 1, isOver: value >= threshold }
    : null;
}

function bar(attribute) {
  const told = measured(attribute);
  if (!told) {
    return null;
  }
  const mark = told.mark * BAR;
  return drawing('svg', { class: `bar ${told.isOver ? 'is-critical' : ''}`, viewBox: `-1 0 ${BAR + 2} 12`,
    preserveAspectRatio: 'none', 'aria-hidden': 'true' },
    drawing('rect', { class: 'track', y: 4, width: BAR, height: 4 }),
    drawing('rect', { class: 'part', y: 4, width: told.part * BAR, height: 4 }),
    told.mark && drawing('path', { class: 'threshold', d: `M${mark} 0V12` }));
}

function attributeRow(attribute) {
  const cells = ['current', 'worst', 'threshold', 'value'].map((name) =>
    element('td', { class: 'number' }, textOf(attribute[name])));
  return element('tr', {},
    element('th', { scope: 'row' }, joined([textOf(attribute.id), textOf(attribute.name)], ' ')),
    element('td', { class: 'wide' }, bar(attribute)), cells);
}

function smartView(device) {
  if (!device.smart) {
    return element('p', { class: 'quiet' },
      'The report has no SMART data of this drive. qorctl page --smart asks for it.');
  }
  const smart = objectOf(device.smart);
  const heads = ['Attribute', 'Against the threshold', 'Current', 'Worst', 'Threshold', 'Value'];
  return [
    facts([
      ['Powered on', textOf(smart.power_on_time)],
      ['Temperature', textOf(smart.temperature)],
      ['Predicts its failure', textOf(smart.predictive_failure)],
    ]),
    element('div', { class: 'scroll', tabindex: 0, role: 'region', 'aria-label': 'SMART attributes' },
      element('table', { class: 'smart' },
        element('thead', {}, element('tr', {}, heads.map((head) => element('th', { scope: 'col' }, head)))),
        element('tbody', {}, listOf(smart.attributes).map(attributeRow)))),
  ];
}

// A sentence about the drive, in its own record: "Has 2 media errors: ..." without its name.
function ownSentence({ name }, sentence) {
  if (!name || !sentence.toLowerCase().startsWith(name.toLowerCase())) {
    return sentence;
  }
  const rest = sentence.slice(name.length).replace(/^[: ]+/, '');
  return rest.charAt(0).toUpperCase() + rest.slice(1);
}

export function showRecord(drive) {
  const { device } = drive;
  const close = element('button', { type: 'button', class: 'close', 'aria-label': 'Close',
    on: { click: () => dialog.close() } }, '×');
  const dialog = element('dialog', { class: `record ${healthClass(drive.health)}`, 'aria-labelledby': 'record-title' },
    element('header', {},
      element('h2', { id: 'record-title' }, sign(drive.health, drive.letter),
        element('span', {}, joined([drive.place, drive.state]))),
      close),
    element('p', { class: 'serial' }, element('span', {}, 'Serial number'),
      element('strong', {}, textOf(device.serial) || 'not told')),
    element('ul', { class: 'problems' }, drive.findings.map((finding) =>
      element('li', { class: healthClass(textOf(finding.severity)) },
        element('span', {}, ownSentence(drive, textOf(finding.sentence)))))),
    facts(driveFacts(drive)),
    element('h3', {}, 'SMART'), smartView(device),
    sections(device, 'All that the RAID tool says'));
  dialog.addEventListener('close', () => dialog.remove());
  dialog.addEventListener('click', (event) => event.target === dialog && dialog.close());
  document.body.append(dialog);
  dialog.showModal();
}
