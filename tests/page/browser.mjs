// A browser on the pages that qorctl writes of simulated servers. Whatever a page says on the
// console, or asks for, is kept, and is a failure where a test looks at it.
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';

const { QORCTL, QORSIM, QOR_PLUGIN, HOSTS, MODULES } = process.env;
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

export const reportOf = (host) => JSON.parse(onHost(host, 'storage', '--format', 'json'));

export function pageOfHost(host, ...options) {
  const path = file(`${host}${options.join('')}.html`);
  onHost(host, 'page', '--output', path, ...options);
  return path;
}

// The page of reports: objects, or texts of files. Their names are those of the object.
export function pageOfReports(name, reports) {
  const paths = Object.entries(reports).map(([server, report]) => {
    const path = file(`${server}.json`);
    writeFileSync(path, typeof report === 'string' ? report : JSON.stringify(report));
    return path;
  });
  const path = file(`${name}.html`);
  execFileSync(QORCTL, ['page', ...paths, '--output', path], PIPES);
  return path;
}

let browser;

export async function start() {
  browser = await puppeteer.launch({
    executablePath: '/usr/bin/chromium',
    args: ['--no-sandbox', '--disable-gpu'],
  });
}

export async function stop() {
  await browser.close();
  rmSync(folder, { recursive: true });
}

export async function open(path, { width = 1280, height = 900, dark = false, scripts = true, hash = '' } = {}) {
  const page = await browser.newPage();
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
