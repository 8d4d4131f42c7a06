// One server: the verdict, what to do, its bays, and what belongs to them.
import { enclosureView, light } from './bays.js';
import { objectOf, sectionsOf, textOf } from './model.js';
import { facts, sections, showRecord } from './record.js';
import { counted, drawing, element, healthClass, joined, sign } from './text.js';

const SHOWN_PROBLEMS = 10;

function timeView(time) {
  const short = time.replace(/^(\d{4}-\d\d-\d\d)T(\d\d:\d\d):\d\dZ$/, '$1 $2 UTC');
  return time && element('time', { datetime: time }, short);
}

function header(server) {
  const { report } = server;
  const counts = ['controllers', 'logical_drives', 'physical_drives', 'pcie_ssds'].map((name, i) =>
    counted(report[name]?.length ?? 0, ['controller', 'logical drive', 'drive', 'PCIe SSD'][i]));
  return element('header', { class: `top ${healthClass(server.status)}` },
    element('h1', { tabindex: -1 }, server.name || 'This server'),
    element('p', { class: 'verdict' }, sign(server.status), element('strong', {}, server.status)),
    element('p', { class: 'counts' }, joined(counts)),
    element('p', { class: 'when' }, timeView(server.time),
      joined([server.file, server.toolVersion && `RAID tool ${server.toolVersion}`])));
}

function problemEntry({ health, sentence, drive }, at) {
  const text = drive
    ? element('button', { type: 'button', on: { click: () => showRecord(drive) } }, sentence)
    : element('span', {}, sentence);
  return element('li', { class: joined([healthClass(health), at >= SHOWN_PROBLEMS && 'is-more'], ' ') }, text);
}

function problemsView({ problems }) {
  if (problems.length === 0) {
    return element('p', { class: 'nothing' }, 'Nothing to do.');
  }
  const more = problems.length - SHOWN_PROBLEMS;
  const button = more > 0 && element('button', { type: 'button', class: 'more', on: {
    click: () => {
      button.parentElement.classList.add('shows-all');
      button.remove();
    },
  } }, `Show ${more} more`);
  return element('section', { class: 'advice' }, element('h2', {}, 'What to do'),
    element('ul', { class: 'problems' }, problems.map(problemEntry)), button);
}

// "8 of 8 connected", of the tool's lines "Port 3"
function portsText(device) {
  const ports = sectionsOf(device).flatMap(({ lines }) => lines).filter(([key]) => /^Port \d+$/.test(key));
  const connected = ports.filter(([, value]) => value.startsWith('Connected')).length;
  return ports.length ? `${connected} of ${ports.length} connected` : '';
}

function controllerFacts({ device }) {
  const battery = objectOf(device.battery);
  return facts([
    ['Serial', textOf(device.serial)],
    ['Firmware', textOf(device.firmware_package)],
    ['Memory', textOf(device.memory)],
    ['Battery', joined([textOf(battery.status) || textOf(battery.presence), textOf(battery.charge),
      textOf(battery.temperature)])],
    ['Ports', portsText(device)],
    ['PCI', textOf(objectOf(device.pci).text)],
    ['Driver', textOf(device.driver_version)],
  ]);
}

// Pressed, it lights the drives of the group.
function lightButton(index, view, attributes, ...children) {
  const button = element('button', { type: 'button', 'aria-pressed': 'false', 'data-group': index, ...attributes,
    on: { click: () => light(view(), button) } }, children);
  return button;
}

function logicalDriveView({ device, health }, index, view) {
  return element('li', {}, lightButton(index, view, { class: healthClass(health) }, sign(health),
    element('span', { class: 'name' }, joined([`LD${textOf(device.number)}`, textOf(device.name)], ' ')),
    element('span', { class: 'state' }, textOf(device.state)),
    element('span', { class: 'size' }, textOf(device.capacity))));
}

function groupView(group, index, view) {
  const { device } = group;
  return element('li', { class: 'group-card', 'data-group': index },
    lightButton(index, view, {},
      element('span', { class: 'name' }, group.name || 'No group'),
      element('span', { class: 'level' }, textOf(device.raid_level)),
      element('span', { class: 'size' }, joined([textOf(device.size), counted(group.drives.length, 'drive')]))),
    element('ul', { class: 'logical' }, group.logicalDrives.map((drive) => logicalDriveView(drive, index, view))));
}

function groupsView(groups, view) {
  return groups.length
    ? element('section', { class: 'groups' }, element('h3', {}, 'RAID groups'),
        element('ul', {}, groups.map((group, index) => groupView(group, index, view))))
    : null;
}

function controllerView(controller, server) {
  const { device, groups, enclosures, health } = controller;
  const groupIndexes = new Map(groups.flatMap(({ drives }, index) => drives.map((drive) => [drive, index])));
  const groupIndexOf = (drive) => groupIndexes.get(drive) ?? null;
  const view = element('section', { class: 'controller' },
    element('h2', { class: healthClass(health) }, health && health !== 'OK' && sign(health),
      element('span', {}, `Controller ${controller.number || '?'}`),
      element('span', { class: 'product' }, textOf(device.product))),
    controllerFacts(controller),
    element('div', { class: 'rack' },
      element('div', { class: 'enclosures' }, enclosures.length
        ? enclosures.map((enclosure) => enclosureView(enclosure, server, groupIndexOf, showRecord))
        : element('p', { class: 'quiet' }, 'No drive.')),
      groupsView(groups, () => view)),
    sections(device, 'All that the RAID tool says of this controller'));
  view.addEventListener('pointed', ({ detail }) => {
    for (const part of view.querySelectorAll('.groups [data-group]')) {
      part.classList.toggle('is-pointed', part.dataset.group === detail);
    }
  });
  return view;
}

function wearBar(percent, health) {
  const part = Math.min(100, Math.max(0, percent));
  return drawing('svg', { class: `bar ${healthClass(health)}`, viewBox: '-1 0 102 12', preserveAspectRatio: 'none', 'aria-hidden': 'true' },
    drawing('rect', { class: 'track', y: 4, width: 100, height: 4 }),
    drawing('rect', { class: 'part', y: 4, width: part, height: 4 }));
}

function ssdView({ device, health }) {
  return element('li', { class: `ssd ${healthClass(health)}` },
    element('h3', {}, sign(health), element('span', {}, textOf(device.product) || 'PCIe SSD')),
    element('p', { class: 'wear' }, Number.isFinite(device.used_percent) && wearBar(device.used_percent, health),
      element('span', {}, textOf(device.used) && `${textOf(device.used)} of its rated endurance used`)),
    facts([
      ['Status', textOf(device.status)],
      ['Serial', textOf(device.serial)],
      ['Bus', textOf(device.bus)],
      ['Capacity', textOf(device.capacity)],
      ['Written', textOf(device.written)],
      ['Temperature', textOf(device.temperature)],
      ['Firmware', textOf(device.firmware_version)],
    ]),
    sections(device, 'All that the RAID tool says'));
}

function ssdsView(ssds) {
  return ssds.length
    ? element('section', { class: 'ssds' }, element('h2', {}, 'PCIe SSDs'),
        element('ul', {}, ssds.map(ssdView)))
    : null;
}

function othersView(others) {
  return others.map((other) => element('section', {},
    element('h2', {}, textOf(other.name)), sections(other, 'All that the RAID tool says')));
}

// What the letters mean, of those that are on the page.
function legend({ drives }) {
  const states = new Map(drives.map((drive) => [`${drive.letter}${drive.state}`, drive]));
  const healths = ['OK', 'WARNING', 'CRITICAL', 'UNKNOWN'].filter((health) =>
    drives.some((drive) => drive.health === health));
  return drives.length
    ? element('footer', { class: 'legend' },
        element('ul', { 'aria-label': 'Signs' },
          healths.map((health) => element('li', { class: healthClass(health) }, sign(health), health)),
          [...states.values()].map(({ letter, state }) =>
            element('li', {}, element('b', {}, letter), state))))
    : null;
}

export function serverView(server) {
  server.drives.forEach((drive, index) => {
    drive.index = index;
  });
  return [header(server), problemsView(server),
    ...server.controllers.map((controller) => controllerView(controller, server)),
    ssdsView(server.ssds), ...othersView(server.others), legend(server)].filter(Boolean);
}
