// A report as the page shows it. A report may be anybody's: whatever is not of the kind that is
// expected counts as absent.
import { joined } from './text.js';

export const textOf = (value) =>
  typeof value === 'string' ? value : Number.isFinite(value) ? String(value) : '';
const isObject = (value) => typeof value === 'object' && value !== null && !Array.isArray(value);
export const objectOf = (value) => (isObject(value) ? value : {});
export const listOf = (value) => (Array.isArray(value) ? value.filter(isObject) : []);
const healthOf = (device) => textOf(objectOf(device.health).status);

// What the states of a drive are in a bay: a letter, and a word where the letter is not enough.
const STATES = new Map([
  ['ONLINE', ['O', '']],
  ['HOT SPARE', ['S', 'Spare']],
  ['Unconfig GOOD', ['U', 'Free']],
  ['JBOD', ['J', 'JBOD']],
  ['REBUILD', ['R', 'Rebuild']],
  ['COPYBACK', ['C', 'Copy']],
  ['FAILED', ['F', 'Failed']],
  ['OFFLINE', ['X', 'Offline']],
  ['Unconfig BAD', ['B', 'Bad']],
  ['Foreign', ['E', 'Foreign']],
]);

// What a drive has that is in service and not well.
const TROUBLES = new Map([
  ['drive-media-errors', 'Errors'],
  ['drive-other-errors', 'Errors'],
  ['drive-predictive-failure', 'Failing'],
  ['drive-temperature', 'Hot'],
]);

const LONGEST_GAP = 24;

class Drive {
  constructor(device) {
    this.device = device;
    this.health = healthOf(device);
    this.findings = listOf(objectOf(device.health).findings);
    this.state = textOf(device.status_detail) || textOf(device.status) || 'unknown';
    [this.letter, this.word] = STATES.get(this.state) ?? ['?', this.state];
    this.word ||= TROUBLES.get(textOf(this.findings[0]?.rule)) ?? '';
    this.percent = Number.isFinite(device.progress_percent)
      ? Math.min(100, Math.max(0, device.progress_percent))
      : null;
    this.controller = textOf(device.controller);
    this.enclosure = textOf(device.enclosure);
    this.slot = Number.isInteger(device.slot) && device.slot >= 0 ? device.slot : null;
    this.group = textOf(device.raid_group);
  }

  get place() {
    return this.slot === null
      ? joined(['no known slot', this.device.number === undefined ? '' : `PD${textOf(this.device.number)}`])
      : joined([this.enclosure, String(this.slot)], ':');
  }

  get role() {
    return textOf(this.device.role).replaceAll('_', ' ');
  }

  get groupText() {
    return this.group || (this.device.role === 'global_spare' ? 'global' : '');
  }

  // The facts that find and order a drive; then what is wrong with it.
  get facts() {
    const { device } = this;
    return [
      this.place,
      joined([this.state, textOf(device.progress)], ' '),
      joined([this.group, device.role === 'member' ? '' : this.role], ' '),
      textOf(device.product),
      textOf(device.capacity),
      textOf(device.serial) && `serial ${textOf(device.serial)}`,
      textOf(device.temperature),
      ...this.findings.map((finding) => textOf(finding.message)).filter((text) => text !== this.state),
    ];
  }

  get isEmpty() {
    return false;
  }
}

// Bays without a drive: the slots `first` to `last`.
class Gap {
  constructor(first, last) {
    this.first = first;
    this.last = last;
  }

  get isEmpty() {
    return true;
  }
}

function gaps(first, last) {
  if (last - first >= LONGEST_GAP) {
    return [new Gap(first, last)];
  }
  return Array.from({ length: last - first + 1 }, (_, i) => new Gap(first + i, first + i));
}

// The bays of an enclosure by slot. How many it has is not told: a slot below one with a drive is
// empty. Some enclosures count from 1.
function baysOf(drives) {
  const placed = drives.filter((drive) => drive.slot !== null).sort((a, b) => a.slot - b.slot);
  const bays = [];
  let next = placed[0]?.slot === 0 ? 0 : 1;
  for (const drive of placed) {
    if (drive.slot > next) {
      bays.push(...gaps(next, drive.slot - 1));
    }
    bays.push(drive);
    next = drive.slot + 1;
  }
  return bays;
}

const byNumber = (a, b) => a.localeCompare(b, 'en', { numeric: true });

function grouped(values, keyOf) {
  const groups = new Map();
  for (const value of values) {
    const key = keyOf(value);
    if (!groups.has(key)) {
      groups.set(key, []);
    }
    groups.get(key).push(value);
  }
  return groups;
}

function enclosuresOf(drives) {
  const placed = grouped(drives.filter((drive) => drive.slot !== null), (drive) => drive.enclosure);
  const enclosures = [...placed]
    .sort(([a], [b]) => byNumber(a, b))
    .map(([number, inside]) => ({
      title: number ? `Enclosure ${number}` : 'No enclosure told',
      drives: inside,
      bays: baysOf(inside),
    }));
  const lost = drives.filter((drive) => drive.slot === null);
  return lost.length
    ? [...enclosures, { title: 'In no known slot', drives: lost, bays: lost }]
    : enclosures;
}

// The RAID groups of a controller with their logical drives; those of a group that is not listed
// are in one of their own.
function groupsOf(report, controller, drives) {
  const mine = (device) => textOf(device.controller) === controller;
  const logical = listOf(report.logical_drives).filter(mine);
  const listed = listOf(report.raid_groups).filter(mine);
  const names = new Set(listed.map((group) => textOf(group.name)));
  for (const drive of logical) {
    names.add(textOf(drive.raid_group));
  }
  return [...names].map((name) => ({
    name,
    device: listed.find((group) => textOf(group.name) === name) ?? {},
    logicalDrives: logical
      .filter((drive) => textOf(drive.raid_group) === name)
      .map((device) => ({ device, health: healthOf(device) })),
    drives: name ? drives.filter((drive) => drive.group === name) : [],
  }));
}

function controllersOf(report, drives) {
  const devices = listOf(report.controllers);
  const numbers = new Set(devices.map((device) => textOf(device.number)));
  for (const device of [...listOf(report.physical_drives), ...listOf(report.logical_drives)]) {
    numbers.add(textOf(device.controller));
  }
  const drivesOf = grouped(drives, (drive) => drive.controller);
  return [...numbers].sort(byNumber).map((number) => {
    const mine = drivesOf.get(number) ?? [];
    const device = devices.find((entry) => textOf(entry.number) === number) ?? {};
    return {
      number,
      device,
      health: healthOf(device),
      enclosures: enclosuresOf(mine),
      groups: groupsOf(report, number, mine),
    };
  });
}

// The drives by their place: a large server has many findings, and many drives for each.
const placed = (drives) => grouped(drives, ({ device }) => placeOf(device, textOf(device.number)));
const placeOf = (told, number) =>
  JSON.stringify([textOf(told.controller), number, textOf(told.enclosure), textOf(told.slot)]);

// The finding's drive, if it is about one.
function driveOf(finding, places) {
  const told = objectOf(finding.physical_drive);
  const place = finding.physical_drive ? places.get(placeOf(told, textOf(told.drive))) ?? [] : [];
  return place.find(({ device }) => textOf(device.serial) === textOf(told.serial)) ?? place[0] ?? null;
}

// What is only to be noted is told where nothing else says why the state is not known.
function messagesOf(report, isNoted) {
  return listOf(report.messages)
    .filter((message) => message.severity !== 'info' || isNoted)
    .map((message) => ({
      health: message.severity === 'warning' ? 'WARNING' : 'UNKNOWN',
      sentence: joined([textOf(message.text), textOf(message.remedy)], '. '),
      drive: null,
    }));
}

function withDrive(finding, places) {
  const drive = driveOf(finding, places);
  if (drive) {
    drive.name = textOf(finding.object);
  }
  return { health: textOf(finding.severity), sentence: textOf(finding.sentence), drive };
}

// A sentence for each object, of the worst that is known of it, as `qorctl status` has them.
function problemsOf(report, drives) {
  const seen = new Set();
  const all = listOf(objectOf(report.health).findings);
  const findings = all.filter((finding) => {
    const object = textOf(finding.object);
    const isNew = !object || !seen.has(object);
    seen.add(object);
    return isNew;
  });
  const places = placed(drives);
  return [
    ...messagesOf(report, all.length === 0 && healthOf(report) !== 'OK'),
    ...findings.map((finding) => withDrive(finding, places)),
  ];
}

export function readServer({ name, file, time, problem, report }) {
  const told = objectOf(report);
  const drives = listOf(told.physical_drives).map((device) => new Drive(device));
  return {
    name: textOf(name),
    file: textOf(file),
    time: textOf(time),
    status: problem ? 'UNKNOWN' : textOf(objectOf(told.health).status),
    problems: problem
      ? [{ health: 'UNKNOWN', sentence: `${textOf(file)}: ${textOf(problem)}`, drive: null }]
      : problemsOf(told, drives),
    toolVersion: textOf(told.tool_version),
    report: told,
    drives,
    controllers: controllersOf(told, drives),
    ssds: listOf(told.pcie_ssds).map((device) => ({ device, health: healthOf(device) })),
    others: listOf(told.others),
  };
}

// The sections of a device as lines of [section, key, value].
export function sectionsOf(device) {
  return Object.entries(objectOf(device.sections)).map(([title, section]) => ({
    title,
    lines: Object.entries(objectOf(section)).flatMap(([key, value]) =>
      Array.isArray(value)
        ? listOf(value).flatMap((group) =>
            Object.entries(group).map(([inner, text]) => [joined([key, inner], ' / '), textOf(text)]))
        : [[key, textOf(value)]]),
  }));
}
