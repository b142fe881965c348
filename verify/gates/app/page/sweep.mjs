// The page of a sweep in a browser: node sweep.mjs --program P --browser B [--shots DIR]

import assert from 'node:assert/strict';
import {spawnSync} from 'node:child_process';
import {mkdtempSync, readFileSync, rmSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join, resolve} from 'node:path';
import {parseArgs} from 'node:util';
import {settled, startBrowser} from './browser.mjs';

const {values: options} = parseArgs({
  options: {program: {type: 'string'}, browser: {type: 'string'}, shots: {type: 'string'}},
});

const browser = await startBrowser(options.browser);
const folder = mkdtempSync(join(tmpdir(), 'voxloc-sweep-'));

// --- What the checks share ---------------------------------------------------------------------

const Columns = 7;
const Rows = 2; // of elevations, and of ranges

function sweep() {
  // The room has no place for some of the far talkers; the noise makes gross errors.
  const words = ['sweep', '--array', 'aster', '--array', 'foxglove', '--grid', `${Columns},2,2`,
    '--azimuth=-42,42', '--range', '1,5', '--frames', '34', '--room', '6,5,3',
    '--rt60', '0.1', '--snr', '4', '--json', 'sweep.json', '--report', 'sweep.html'];
  const done = spawnSync(resolve(options.program), words, {cwd: folder, encoding: 'utf8'});
  assert.equal(done.status, 0, done.stderr);
  return JSON.parse(readFileSync(join(folder, 'sweep.json'), 'utf8'));
}

const mapsOf = (page) => page.$$('figure');
const readoutOf = (figure) => figure.$eval('output', (output) => output.textContent);
const textOf = (page, selector) => page.$eval(selector, (element) => element.textContent);

async function middleOfCell(figure, across, up) {
  const map = await figure.$('.map');
  await map.scrollIntoView();
  return map.evaluate((drawing, cell) => {
    const boxes = [...drawing.querySelectorAll('rect:not(.chosen)')];
    const box = boxes[cell].getBoundingClientRect();
    return [box.x + box.width / 2, box.y + box.height / 2];
  }, up * Columns + across);
}

async function hoverCell(page, figure, across, up) {
  await page.mouse.move(...(await middleOfCell(figure, across, up)));
  await settled(page);
}

const dataOf = (page) => page.evaluate(() => voxlocSweep.data);

// What the page says of a number: two digits after the point, one, or none.
function errorText(value) {
  return value.toFixed(value < 0.995 ? 2 : value < 9.95 ? 1 : 0);
}

const checks = [];
const check = (name, on, run) => checks.push({name, on, run});

// --- The checks ----------------------------------------------------------------------------------

check('the page has the figures of the sweep', 'wide', async ({page, sweeps}) => {
  const data = await dataOf(page);
  assert.deepEqual(data.sweeps, sweeps);
  assert.match(data.command, /^voxloc sweep --array aster --array foxglove .* --snr 4$/);
  assert.equal(await textOf(page, '#command'), data.command);
  assert.match(await textOf(page, '#about'), /room 6\.0 x 5\.0 x 3\.0 m, RT60 0\.10 s, SNR 4\.0 dB/);
  assert.match(await textOf(page, '#about'), /voxloc \d+\.\d+\.\d+/);
});

check('the tables show what --json says', 'wide', async ({page, sweeps}) => {
  const tables = await page.$$eval('.array .table', (all) => all.map((table) =>
    [...table.querySelectorAll('tbody tr')].map((row) => [...row.cells].map((c) => c.textContent))));
  assert.equal(tables.length, 2);
  sweeps.forEach(({frame_voice: errors, geometry}, k) => {
    const rows = Object.fromEntries(tables[k].map(([name, ...cells]) => [name, cells]));
    const {count, median, p90, gross} = errors.azimuth;
    assert.deepEqual(rows['azimuth °'].slice(0, 4), [String(count), median.toFixed(2),
      p90.toFixed(2), `${(100 * gross).toFixed(1)} %`]);
    assert.equal(rows['range m'][1], errors.range.median.toFixed(2));
    assert.equal('elevation °' in rows, geometry.has_elevation);
  });
});

check('cells together count what the sweep counted', 'wide', async ({page, sweeps}) => {
  const {maps} = await dataOf(page);
  sweeps.forEach((one, k) => {
    for (const kind of ['elevation', 'range']) {
      const {cells} = maps[k][kind];
      const sum = (pick) => cells.reduce((all, cell) => all + pick(cell), 0);
      assert.equal(sum((cell) => cell.places), one.places);
      for (const estimates of ['frame_voice', 'frame_always', 'half_second_voice']) {
        assert.equal(sum((cell) => cell[estimates].azimuth[0]), one[estimates].azimuth.count);
      }
    }
  });
});

check('hovering shows the figures of a cell', 'wide', async ({page}) => {
  const [byElevation] = await mapsOf(page);
  const {maps} = await dataOf(page);
  const isTelling = ({frame_voice: {azimuth: [count, median, p90]}}) =>
    count > 0 && p90 !== null && errorText(median) !== errorText(p90);
  const cell = maps[0].elevation.cells.find(isTelling);
  assert.ok(cell, 'no cell has two figures to tell apart');
  await hoverCell(page, byElevation, cell.across, cell.up);
  const [count, median, p90, gross] = cell.frame_voice.azimuth;
  const azimuth = String(-42 + 14 * cell.across).replace('-', '\u2212');
  const text = await readoutOf(byElevation);
  for (const part of [`azimuth ${azimuth}°`, `median ${errorText(median)}°`, `90 % ${errorText(p90)}°`,
    `over 15° ${(100 * gross).toFixed(1)} %`, `${count} estimates`]) {
    assert.ok(text.includes(part), `${part} is not in ${text}`);
  }
  await page.mouse.move(0, 0);
  await settled(page);
  assert.match(await readoutOf(byElevation), /^Point at a cell/);
});

check('a cell without talkers is empty, not zero', 'wide', async ({page}) => {
  const [, byRange] = await mapsOf(page);
  const {maps} = await dataOf(page);
  const isThere = maps[0].range.cells.some((one) => one.across === 0 && one.up === 1);
  assert.ok(!isThere, 'the room has a place there');
  await hoverCell(page, byRange, 0, 1);
  assert.match(await readoutOf(byRange), /azimuth −42°, range 5 m: no talkers/);
  const empty = await byRange.$$eval('.empty', (all) => all.map((box) => box.getAttribute('fill')));
  assert.equal(empty.length, Columns * Rows - maps[0].range.cells.length);
  assert.ok(empty.every((fill) => fill === null), 'an empty cell has a colour of the scale');
});

check('gross errors are marked apart from the scale', 'wide', async ({page}) => {
  await page.keyboard.press('9');
  const {maps} = await dataOf(page);
  const isGross = ({frame_voice: {azimuth: [count, , p90]}}) =>
    count > 0 && (p90 === null || p90 > 15);
  const expected = maps.map(({range}) => range.cells.filter(isGross).length);
  assert.ok(expected[0] + expected[1] > 0, 'no cell has gross errors to mark');
  const marked = await page.$$eval('figure', (all) => all.map((one) =>
    [one.querySelectorAll('rect.gross').length, one.querySelectorAll('.cross').length]));
  assert.deepEqual([marked[1], marked[3]], expected.map((count) => [count, count]));
  await page.keyboard.press('m');
});

check('the control chooses the error, its unit and its legend', 'wide', async ({page}) => {
  const [byElevation] = await mapsOf(page);
  await page.click('#quantity label:nth-of-type(3)');
  await hoverCell(page, byElevation, 3, 0);
  assert.match(await readoutOf(byElevation), /median \d+(\.\d+)? m, 90 % \d+(\.\d+)? m, \d+ est/);
  assert.match(await textOf(page, '#legend'), /5 m/);
  assert.doesNotMatch(await textOf(page, '#legend'), /°/);
  assert.match(await byElevation.$eval('.note', (note) => note.textContent), /straight ahead/);
  await page.keyboard.press('a');
  assert.match(await textOf(page, '#legend'), /15°.*over 15°/);
  await page.mouse.move(0, 0);
});

check('where no pairs tell an elevation the map says so', 'wide', async ({page}) => {
  const noteOf = (figure) => figure.$eval('.note', (note) => note.textContent);
  const isDrawn = (figure) => figure.$eval('.map', (map) => map.getClientRects().length > 0);
  await page.keyboard.press('e');
  const [aster, , foxglove, foxgloveRange] = await mapsOf(page);
  assert.ok(await isDrawn(aster));
  for (const figure of [foxglove, foxgloveRange]) {
    assert.ok(!(await isDrawn(figure)));
    assert.match(await noteOf(figure), /No pairs of this array tell the elevation/);
  }
  await page.keyboard.press('a');
  assert.ok(await isDrawn(foxglove));
});

check('other estimates have other figures', 'wide', async ({page, sweeps}) => {
  await page.select('#kind', 'half_second_always');
  await settled(page);
  const shown = await page.$eval('.array .table tbody td:nth-child(2)', (cell) => cell.textContent);
  assert.equal(shown, String(sweeps[0].half_second_always.azimuth.count));
  await page.select('#kind', 'frame_voice');
});

check('keys go from cell to cell', 'wide', async ({page}) => {
  const [byElevation] = await mapsOf(page);
  await page.focus('#kind');
  for (let k = 0; k < 10; k++) {
    if (await page.evaluate(() => document.activeElement.classList.contains('map'))) break;
    await page.keyboard.press('Tab');
  }
  assert.match(await readoutOf(byElevation), /^azimuth 0°/);
  await page.keyboard.press('ArrowRight');
  await page.keyboard.press('ArrowRight');
  await page.keyboard.press('ArrowLeft');
  assert.match(await readoutOf(byElevation), /^azimuth 14°, elevation 21\.9°/);
  await page.keyboard.press('ArrowDown');
  await page.keyboard.press('Home');
  assert.match(await readoutOf(byElevation), /^azimuth −42°, elevation −21\.9°/);
  await page.keyboard.press('End');
  await page.keyboard.press('ArrowRight');
  assert.match(await readoutOf(byElevation), /^azimuth 42°/);
  await page.keyboard.press('Escape');
  assert.match(await readoutOf(byElevation), /^Point at a cell/);
});

check('microphones are drawn from the front and from above', 'wide', async ({page}) => {
  const views = await page.$$eval('.array .views', (all) => all.map((one) =>
    [...one.querySelectorAll('svg')].map((view) => ({
      title: view.getAttribute('aria-label'), mics: view.querySelectorAll('.mic').length,
      pairs: view.querySelectorAll('line.azimuth').length, height: view.getBoundingClientRect().height,
    }))));
  assert.deepEqual(views.map((pair) => pair.map(({mics}) => mics)), [[6, 4], [4, 4]]);
  for (const view of views.flat()) assert.ok(view.pairs > 0 && view.height > 60, view.title);
  const notes = await page.$$eval('.views .note', (all) => all.map((note) => note.textContent));
  assert.deepEqual(notes.map((note) => note.includes('dashed: elevation pairs')), [true, false]);
});

const backOf = (page) => page.evaluate(() => getComputedStyle(document.body).backgroundColor);

check('light and dark: the system decides until the reader does', 'wide', async ({page, phone}) => {
  assert.equal(await backOf(phone.page), 'rgb(20, 23, 26)');
  assert.equal(await backOf(page), 'rgb(255, 255, 255)');
  await page.keyboard.press('d');
  assert.equal(await backOf(page), 'rgb(20, 23, 26)');
  await page.click('#theme');
  assert.equal(await backOf(page), 'rgb(255, 255, 255)');
});

check('a phone shows all within its width', 'phone', async ({page}) => {
  const [whole, shown] = await page.evaluate(
    () => [document.documentElement.scrollWidth, document.documentElement.clientWidth]);
  assert.equal(shown, 390);
  assert.ok(whole <= shown, `${whole} pixels wide`);
  const [byElevation] = await mapsOf(page);
  const cut = await page.$$eval('.map, .views svg, #legend svg', (all) =>
    all.filter((one) => one.getBoundingClientRect().right > 390).length);
  assert.equal(cut, 0);
  await page.touchscreen.tap(...(await middleOfCell(byElevation, 5, 1)));
  assert.match(await readoutOf(byElevation), /^azimuth 28°, elevation 21\.9°/);
});

check('paper is light and has its figures', 'phone', async ({page}) => {
  await page.evaluate(() => dispatchEvent(new Event('beforeprint')));
  assert.equal(await backOf(page), 'rgb(255, 255, 255)');
  const [figures, cells] = await page.evaluate(() => {
    const map = document.querySelector('.map');
    return [map.querySelectorAll('.value').length, map.querySelectorAll('rect.cell:not(.gross)').length];
  });
  assert.ok(cells > 0);
  assert.equal(figures, cells);
  await page.evaluate(() => dispatchEvent(new Event('afterprint')));
  assert.equal(await backOf(page), 'rgb(20, 23, 26)');
});

// --- Running them --------------------------------------------------------------------------------

async function runCheck({name, on, run}, opened, sweeps) {
  await opened[on].page.bringToFront();
  try {
    await run({...opened[on], phone: opened.phone, sweeps});
    console.log(`ok      ${name}`);
    return true;
  } catch (error) {
    console.log(`FAILED  ${name}: ${error.message}`);
    return false;
  }
}

let failed = 0;
try {
  const sweeps = sweep();
  const url = `file://${folder}/sweep.html`;
  const opened = {
    wide: await browser.open(url),
    phone: await browser.open(url, {width: 390, height: 844, isMobile: true, theme: 'dark'}),
  };
  check('no page complains or asks for anything', 'wide', async () => {
    for (const {complaints} of Object.values(opened)) assert.deepEqual(complaints, []);
  });
  for (const one of checks) if (!(await runCheck(one, opened, sweeps))) failed++;
  for (const [name, {page}] of options.shots ? Object.entries(opened) : []) {
    await page.bringToFront();
    await page.screenshot({path: join(options.shots, `sweep-${name}.png`), fullPage: true});
  }
} finally {
  await browser.close();
  rmSync(folder, {recursive: true, force: true});
}
console.log(`${checks.length - failed} passed, ${failed} failed`);
process.exit(failed ? 1 : 0);
