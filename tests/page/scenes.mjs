// The scenes of docs/images: pages of which a picture is kept, and what stands in them as text.
import { execFileSync } from 'node:child_process';
import { readFileSync } from 'node:fs';
import { file, hosts, open, pageOfHost, pageOfReports, reportInPage, reportOf } from './browser.mjs';

const PAPER = { width: 688, height: 1017 };  // what A4 has inside its margins, in pixels

const serverPage = (host) => () => pageOfReports(host, { [host]: reportOf(host) });

function fleetPage() {
  const reports = hosts.map((host) => [host, reportOf(host)]);
  return pageOfReports('fleet', { ...Object.fromEntries(reports), broken: '{"schema_version": 2,' });
}

const smartPage = (host) => () =>
  pageOfReports(`${host}-smart`, { [`${host}-smart`]: reportInPage(pageOfHost(host, '--smart')) });

async function firstRecord(page) {
  await page.click('button.bay');
  await page.waitForSelector('dialog[open]');
}

// A drive in each state, as docs/page.md lists them; the last one's is unknown to the page.
const DRIVES = [['ONLINE', 'OK'], ['HOT SPARE', 'OK', { role: 'global_spare' }], ['Unconfig GOOD', 'OK'],
  ['JBOD', 'OK'], ['REBUILD', 'WARNING', { progress_percent: 37 }], ['COPYBACK', 'WARNING', { progress_percent: 80 }],
  ['FAILED', 'CRITICAL'], ['OFFLINE', 'CRITICAL'], ['Unconfig BAD', 'WARNING'], ['Foreign', 'WARNING'],
  ['Unusual', 'UNKNOWN']];

function languagePage() {
  const report = reportOf('failed-drive');
  report.physical_drives = DRIVES.map(([state, status, more = {}], i) => ({ controller: 0, enclosure: 252,
    slot: i < 4 ? i : i + 1, status_detail: state, health: { status, findings: [] }, ...more }));
  return pageOfReports('language', { language: report });
}

// Leaves the bays and the legend, and puts the colours and the sizes of texts beside them.
const showLanguage = (page) => page.evaluate(() => {
  const made = (tag, style, ...inside) => {
    const element = document.createElement(tag);
    Object.assign(element.style, style);
    element.append(...inside);
    return element;
  };
  const heading = (text) => made('h2', {}, text);
  const swatch = (name) => made('div', {},
    made('div', { height: '2.5rem', background: `var(--${name})`, border: '1px solid var(--line)', borderRadius: 'var(--round)' }),
    made('p', { fontSize: 'var(--small)', color: 'var(--soft)' }, name));
  const colours = ['ink', 'soft', 'edge', 'line', 'paper', 'panel', 'link', 'link-wash', 'ok', 'warning',
    'warning-fill', 'warning-wash', 'critical', 'critical-fill', 'critical-wash', 'unknown', 'unknown-fill', 'unknown-wash'];
  const palette = made('div', { display: 'grid', gap: 'var(--gap-3)', gridTemplateColumns: 'repeat(9, 1fr)' }, ...colours.map(swatch));
  const sizes = made('div', { display: 'flex', gap: 'var(--gap-8)', alignItems: 'baseline' },
    ...['small', 'text', 'large', 'big', 'huge'].map((name) => made('span', { fontSize: `var(--${name})` }, name)));
  document.getElementById('page').replaceChildren(heading('Signs'), document.querySelector('.legend'),
    document.querySelector('.bays'), heading('Colours'), palette, heading('Texts'), sizes);
  document.querySelector('.bays').style.setProperty('--columns', 'repeat(12, minmax(0, 4.5rem))');
  document.querySelectorAll('.legend .sign').forEach((sign) => Object.assign(sign.style, { width: '1.75rem', height: '1.75rem' }));
});

export const SCENES = {
  'failed-drive': { make: serverPage('failed-drive') },
  rebuilding: { make: serverPage('rebuilding'), look: { dark: true } },
  large: { make: serverPage('large'), look: { width: 1920, height: 1080 } },
  fleet: { make: fleetPage },
  'pcie-ssds': { make: serverPage('pssd-only') },
  record: { make: smartPage('sata'), prepare: firstRecord },
  narrow: { make: serverPage('failed-drive'), look: { width: 360, height: 800 } },
  paper: { make: serverPage('failed-drive'), look: PAPER, isPaper: true },
  language: { make: languagePage, look: { width: 1024, height: 660 }, prepare: showLanguage },
  'language-dark': { make: languagePage, look: { width: 1024, height: 660, dark: true }, prepare: showLanguage },
};

// Both in one go: to set the one resets the other.
async function likePaper(page) {
  const session = await page.createCDPSession();
  await session.send('Emulation.setEmulatedMedia',
    { media: 'print', features: [{ name: 'prefers-reduced-motion', value: 'reduce' }] });
}

// The scene's page in a browser, when all is in its place.
export async function openScene({ make, look, prepare = () => {}, isPaper = false }, on) {
  const page = await open(make(), { ...look, on });
  if (isPaper) {
    await likePaper(page);
  }
  await page.evaluate(() => document.fonts.ready);
  await page.evaluate(() => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))));
  await prepare(page);
  return page;
}

async function paperPicture(page) {
  const path = file('paper.pdf');
  await page.pdf({ path, preferCSSPageSize: true });
  execFileSync('pdftoppm', ['-r', '72', '-png', '-f', '1', '-singlefile', path, file('paper')]);
  return readFileSync(file('paper.png'));
}

export function pictureOf(page, { isPaper = false }) {
  return isPaper ? paperPicture(page) : page.screenshot();
}

// Every bay and every text that can be seen, a line each: where the bay is in its row, how it is
// coloured, what it says.
export function contentOf(page) {
  return page.evaluate(() => {
    const isSeen = (element) => element.checkVisibility() && !element.closest('.unseen');
    const colours = ({ backgroundColor, borderTopColor, color }) =>
      `ground ${backgroundColor} edge ${borderTopColor} ink ${color}`;
    const bayLine = (bay) => {
      const row = bay.closest('.bays').getBoundingClientRect();
      const { x, y, width, height } = bay.getBoundingClientRect();
      const box = [x - row.x, y - row.y, width, height].map(Math.round).join(' ');
      const texts = [...bay.querySelectorAll('.slot, .sign text, .word, .group')].map((part) => part.textContent);
      return `bay at ${box}: ${texts.filter(Boolean).join(', ')}; ${colours(getComputedStyle(bay))}`;
    };
    const textLine = (node) => {
      const { color, fontSize, fontWeight } = getComputedStyle(node.parentElement);
      return `${node.textContent.trim()}; ${fontSize} ${fontWeight} ${color}`;
    };
    const lines = [];
    const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_ELEMENT | NodeFilter.SHOW_TEXT);
    for (let node = walker.nextNode(); node; node = walker.nextNode()) {
      if (node instanceof Element && node.matches('.bay') && isSeen(node)) {
        lines.push(bayLine(node));
      } else if (node instanceof Text && node.textContent.trim() && isSeen(node.parentElement) &&
          !node.parentElement.closest('.bay, script')) {
        lines.push(textLine(node));
      }
    }
    return lines;
  });
}
