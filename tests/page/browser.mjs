// A browser on the pages that qorctl writes of simulated servers. Whatever a page says on the
// console, or asks for, is kept, and is a failure where a test looks at it.
import { execFileSync } from 'node:child_process';
import { existsSync, mkdirSync, mkdtempSync, readdirSync, readFileSync, rmSync, symlinkSync, utimesSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';

const { QORCTL, QORSIM, QOR_PLUGIN, HOSTS, MODULES } = process.env;
const WRITTEN = new Date('2026-11-20T10:00:00Z');
const modules = createRequire(join(MODULES, 'package.json'));
const { default: puppeteer } = await import(pathToFileURL(modules.resolve('puppeteer-core')));
const AXE = readFileSync(modules.resolve('axe-core/axe.min.js'), 'utf8');

export const folder = mkdtempSync(join(tmpdir(), 'qor-page-'));
export const file = (name) => join(folder, name);

export const hosts = readdirSync(HOSTS)
  .filter((name) => name.endsWith('.json') && name !== 'host.schema.json')
  .map((name) => name.replace(/\.json$/, ''));

const PIPES = { stdio: ['ignore', 'pipe', 'pipe'], maxBuffer: 1 << 30, env: { ...process.env, QOR_PLUGIN } };

// What a command of qorctl says on a simulated server; its status may be any.
export function onHost(host, ...words) {
  try {
    return String(execFileSync(QORSIM, ['run', '--host', host, '--', QORCTL, ...words], PIPES));
  } catch (error) {
    return String(error.stdout);
  }
}

const jsons = new Map();

// The host's report, anew at each call; the host is asked once.
export function reportOf(host) {
  if (!jsons.has(host)) {
    jsons.set(host, onHost(host, 'storage', '--format', 'json'));
  }
  return JSON.parse(jsons.get(host));
}

export function pageOfHost(host, ...options) {
  const path = file(`${host}${options.join('')}.html`);
  if (!existsSync(path)) {
    onHost(host, 'page', '--output', path, ...options);
  }
  return path;
}

// The report that stands in a page.
export function reportInPage(path) {
  const [, data] = /<script type="application\/json" id="data-0">(.*)<\/script>/.exec(readFileSync(path, 'utf8'));
  return JSON.parse(data).report;
}

// The page of reports: objects, or texts of files. Their names are those of the object; all were
// written at the same time.
export function pageOfReports(name, reports) {
  const names = Object.entries(reports).map(([server, report]) => {
    const path = file(`${server}.json`);
    writeFileSync(path, typeof report === 'string' ? report : JSON.stringify(report));
    utimesSync(path, WRITTEN, WRITTEN);
    return `${server}.json`;
  });
  execFileSync(QORCTL, ['page', '--output', `${name}.html`, '--', ...names], { ...PIPES, cwd: folder });
  return file(`${name}.html`);
}

// The page of files with these names, texts or bytes, and ".json" behind them.
export function pageOfNames(name, names, report) {
  const place = file(`${name}.d`);
  mkdirSync(place);
  for (const each of names) {
    writeFileSync(Buffer.concat([`${place}/`, each, '.json'].map((part) => Buffer.from(part))), JSON.stringify(report));
  }
  // A command line of Node's has no bytes that are no text.
  execFileSync('sh', ['-c', '"$0" page --output "$1" -- *.json', QORCTL,
    file(`${name}.html`)], { ...PIPES, cwd: place });
  return file(`${name}.html`);
}

// The page of a host whose tool says other bytes: each text of the first column is replaced.
export function pageOfBytes(host, replacements) {
  const recording = file(`${host}.recording`);
  const qorsim = (...words) => execFileSync(QORSIM, words, PIPES);
  qorsim('record', '--host', host, recording, '--', QORCTL, 'storage', '--output', '/dev/null');
  for (const name of readdirSync(join(recording, 'calls')).filter((entry) => entry.endsWith('.out'))) {
    const path = join(recording, 'calls', name);
    const text = replacements.reduce((said, [from, to]) => said.replaceAll(from, to), readFileSync(path, 'latin1'));
    writeFileSync(path, text, 'latin1');
  }
  const path = file(`${host}.bytes.html`);
  qorsim('replay', recording, '--', QORCTL, 'page', '--output', path);
  return path;
}

// What it keeps goes into our folder, not into somebody's home.
// On every machine the same two files, of the package fonts-dejavu-core. What fontconfig makes of a
// choice among the files of a folder is not the same in all of its versions.
function writeFonts(name, rgba) {
  const fonts = file('fonts');
  mkdirSync(fonts, { recursive: true });
  for (const font of ['DejaVuSans.ttf', 'DejaVuSans-Bold.ttf']) {
    if (!existsSync(join(fonts, font))) {
      symlinkSync(join('/usr/share/fonts/truetype/dejavu', font), join(fonts, font));
    }
  }
  const settings = readFileSync(new URL('fonts.conf', import.meta.url), 'utf8');
  writeFileSync(file(name), settings.replace('FOLDER', fonts).replace('RGBA', rgba));
  return file(name);
}

const launch = (fonts, flags = []) => puppeteer.launch({
  executablePath: '/usr/bin/chromium',
  args: ['--no-sandbox', '--disable-gpu', ...flags],
  env: { ...process.env, FONTCONFIG_FILE: fonts, HOME: folder, XDG_CACHE_HOME: folder, XDG_CONFIG_HOME: folder },
});

// A browser that draws letters as a screen of its own would, with coloured edges.
export function launchOnOtherScreen() {
  return launch(writeFonts('screen.conf', 'rgb'), ['--enable-lcd-text']);
}

let browser;

export async function start() {
  browser = await launch(writeFonts('fonts.conf', 'none'));
}

export async function stop() {
  await browser.close();
  rmSync(folder, { recursive: true });
}

export async function open(path, { width = 1280, height = 900, dark = false, scripts = true, hash = '', on = browser } = {}) {
  const page = await on.newPage();
  page.said = [];
  page.on('console', (message) => page.said.push(message.text()));
  page.on('pageerror', (error) => page.said.push(String(error)));
  page.on('dialog', (dialog) => {
    page.said.push(dialog.message());
    dialog.dismiss();
  });
  page.on('request', (request) => {
    if (request.url().split('#')[0] !== `file://${path}`) {
      page.said.push(`request of ${request.url()}`);
    }
  });
  await page.setJavaScriptEnabled(scripts);
  await page.setViewport({ width, height });
  await page.emulateMediaFeatures([
    { name: 'prefers-color-scheme', value: dark ? 'dark' : 'light' },
    { name: 'prefers-reduced-motion', value: 'reduce' },
  ]);
  await page.goto(`file://${path}${hash}`);
  return page;
}

// Milliseconds that the processors worked for the browser while `work` was done. On a machine that
// does nothing else, it takes no longer.
export async function workOf(work) {
  const session = await browser.target().createCDPSession();
  const used = async () => {
    const { processInfo } = await session.send('SystemInfo.getProcessInfo');
    return processInfo.reduce((sum, { cpuTime }) => sum + cpuTime * 1000, 0);
  };
  const before = await used();
  await work();
  return (await used()) - before;
}

export async function violations(page) {
  await page.setBypassCSP(true);
  await page.evaluate(AXE);
  return page.evaluate(async () =>
    (await window.axe.run()).violations.flatMap(({ id, nodes }) =>
      nodes.map(({ target, any }) => `${id}: ${target} ${any[0]?.message ?? ''}`)));
}

export const textsOf = (page, selector) =>
  page.$$eval(selector, (found) => found.map((element) => element.textContent));

// The page's text on A4, each run of blanks one blank.
export async function printed(page, name) {
  const path = file(`${name}.pdf`);
  await page.pdf({ path, format: 'A4', preferCSSPageSize: true });
  return String(execFileSync('pdftotext', ['-layout', path, '-'])).replace(/\s+/g, ' ');
}
