// The pictures of docs/images beside the pages as they are now. QOR_ACCEPT=1 in the environment
// writes both the pictures and images.json.
//
// images.json has the place and the colours of every bay and the words and colours of every text:
// these are the same on every machine. What is drawn differs a little with the browser.
import assert from 'node:assert/strict';
import { readFileSync, writeFileSync } from 'node:fs';
import { after, before, test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { launchOnOtherScreen, open, start, stop } from './browser.mjs';
import { difference, MOST_SQUARES, smallPng } from './pictures.mjs';
import { contentOf, openScene, pictureOf, SCENES } from './scenes.mjs';

const IS_ACCEPTED = process.env.QOR_ACCEPT === '1';
const MOST_BYTES = 100_000;

const here = (name) => fileURLToPath(new URL(name, import.meta.url));
const RECORD = here('images.json');
const imageOf = (name) => here(`../../docs/images/${name}.png`);
const storedPicture = (name) => readFileSync(imageOf(name));
const storedContents = () => JSON.parse(readFileSync(RECORD, 'utf8'));

let canvas;  // a page to compare pictures on

before(async () => {
  await start();
  canvas = await open('/dev/null');
});
after(stop);

async function accept(contents) {
  for (const [name, scene] of Object.entries(SCENES)) {
    const page = await openScene(scene);
    contents[name] = await contentOf(page);
    writeFileSync(imageOf(name), await smallPng(await pictureOf(page, scene), canvas));
    await page.close();
  }
  writeFileSync(RECORD, `${JSON.stringify(contents, null, 1)}\n`);
}

async function expectScene(name, scene, stored) {
  const page = await openScene(scene);
  assert.deepEqual(await contentOf(page), stored);
  const picture = await pictureOf(page, scene);
  const squares = await difference(picture, storedPicture(name), canvas);
  assert.ok(squares <= MOST_SQUARES, `${squares} squares of the picture differ`);
  await page.close();
}

test('the scenes look as their pictures', async (t) => {
  if (IS_ACCEPTED) {
    await accept({});
  }
  const stored = storedContents();
  assert.deepEqual(Object.keys(stored), Object.keys(SCENES));
  for (const [name, scene] of Object.entries(SCENES)) {
    await t.test(name, () => expectScene(name, scene, stored[name]));
  }
});

test('pictures are small', () => {
  for (const name of Object.keys(SCENES)) {
    assert.ok(storedPicture(name).length < MOST_BYTES, name);
  }
});

test('other edges of letters are no difference', async (t) => {
  const other = await launchOnOtherScreen();
  for (const [name, scene] of Object.entries(SCENES)) {
    await t.test(name, async () => {
      const [page, plain] = [await openScene(scene, other), await openScene(scene)];
      const picture = await pictureOf(page, scene);
      // That the browsers draw differently at all.
      assert.ok(scene.isPaper || !Buffer.from(picture).equals(Buffer.from(await pictureOf(plain, scene))));
      assert.ok(await difference(picture, storedPicture(name), canvas) <= MOST_SQUARES);
      await Promise.all([page.close(), plain.close()]);
    });
  }
  await other.close();
});

// Moves the bay to the next slot, and what is there to its own.
const moveBay = (page, index) => page.evaluate((i) => {
  const bays = document.querySelectorAll('.bays > li');
  bays[i].before(bays[i + 1]);
}, index);

// Whether the bay looks as the next one, but for digits of its slot and group.
const isTwin = (page, index) => page.evaluate((i) => {
  const [one, other] = [...document.querySelectorAll('.bays > li')].slice(i, i + 2).map((bay) => {
    const texts = [...bay.querySelectorAll('.sign text, .word, .group')].map((part) => part.textContent);
    return `${bay.firstChild.className} ${texts}`.replace(/\d/g, '');
  });
  return one === other;
}, index);

test('a bay in another slot is a difference', async () => {
  for (const name of ['failed-drive', 'rebuilding', 'paper', 'language']) {
    const scene = SCENES[name];
    const stored = storedContents()[name];
    const page = await openScene(scene);
    const count = (await page.$$('.bays > li')).length;
    let twins = 0;
    for (let i = 0; i + 1 < count; ++i) {
      await moveBay(page, i);
      assert.notDeepEqual(await contentOf(page), stored, `${name}, bay ${i}`);
      if (await isTwin(page, i)) {
        ++twins;
      } else {
        const squares = await difference(await pictureOf(page, scene), storedPicture(name), canvas);
        assert.ok(squares > MOST_SQUARES, `${name}, bay ${i}: ${squares} squares differ`);
      }
      await moveBay(page, i);
    }
    assert.ok(twins < count / 2);
    assert.deepEqual(await contentOf(page), stored);
    await page.close();
  }
});
