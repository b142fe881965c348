// The page of a run in a browser: node report.mjs --program P --talkers T --browser B [--shots DIR]

import assert from 'node:assert/strict';
import {spawnSync} from 'node:child_process';
import {mkdtempSync, rmSync, writeFileSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join, resolve} from 'node:path';
import {parseArgs} from 'node:util';
import {settled, startBrowser} from './browser.mjs';
import {locate, readCsv, stretchToAnHour} from './run.mjs';

const {values: options} = parseArgs({
  options: {
    program: {type: 'string'}, talkers: {type: 'string'}, browser: {type: 'string'},
    shots: {type: 'string'},
  },
});

const browser = await startBrowser(options.browser);
const folder = mkdtempSync(join(tmpdir(), 'voxloc-page-'));
const urlOf = (name) => `file://${folder}/${name}`;

// --- What the checks share ---------------------------------------------------------------------

const Plots = ['azimuth', 'elevation', 'range', 'quality', 'flags', 'levels'];
const Seconds = 2048 / 48000;
const Minus = '\u2212';

const viewsOf = (page) =>
  page.evaluate(() => voxlocPage.charts.map(({plot}) => [plot.scales.x.min, plot.scales.x.max]));

async function viewOf(page) {
  await settled(page);
  const views = await viewsOf(page);
  for (const view of views) assert.deepEqual(view, views[0], 'the plots show different times');
  return {min: views[0][0], max: views[0][1]};
}

const shownFrame = async (page) => {
  await settled(page);
  return Number(await page.$eval('#frame', (element) => element.textContent));
};

async function areaOf(page, plot) {
  const area = await page.$(`#${plot} .u-over`);
  await area.scrollIntoView();
  await settled(page);
  return area.boundingBox();
}

async function hover(page, plot, share) {
  const {x, y, width, height} = await areaOf(page, plot);
  await page.mouse.move(x + width * share, y + height / 2);
  await settled(page);
}

async function drag(page, plot, from, to) {
  const {x, y, width, height} = await areaOf(page, plot);
  await page.mouse.move(x + width * from, y + height / 2);
  await page.mouse.down();
  await page.mouse.move(x + width * to, y + height / 2, {steps: 5});
  await page.mouse.up();
}

// As the page writes numbers.
function fixed(value, digits) {
  if (value === -Infinity) return `${Minus}∞`;
  const text = value.toFixed(digits);
  return Number(text) === 0 ? text.replace('-', '') : text.replace('-', Minus);
}

// The page rounds the float; the CSV's shortest text for it may stand right between two roundings.
function assertShows(text, value, digits, what) {
  const shown = Number(text.replace(Minus, '-'));
  assert.ok(Math.abs(shown - value) <= 0.5001 * 10 ** -digits, `${what}: ${text} for ${value}`);
  assert.match(text, digits ? new RegExp(`\\.\\d{${digits}}$`) : /\d$/, what);
}

const checks = [];
// On one of the pages; `run` is given it and all of them.
const check = (name, on, run) => checks.push({name, on, run});

// --- The checks ----------------------------------------------------------------------------------

check('every number of the run is in the page', 'sound', async ({page, rows}) => {
  const run = await page.evaluate(() => {
    const {azimuth, elevation, range, quality, marks, frame, time, level, flags} = voxlocPage.run;
    const lists = {azimuth, elevation, range, quality, marks, frame, time};
    const plain = Object.entries(lists).map(([name, list]) => [name, [...list].map(String)]);
    return {...Object.fromEntries(plain), level: level.map((one) => [...one].map(String)), flags};
  });
  assert.equal(run.frame.length, rows.length);
  rows.forEach((row, i) => {
    const same = (name, text, value) =>
      assert.ok(Object.is(Number(text), Math.fround(value)), `${name} of ${i}: ${text}, ${value}`);
    same('frame', run.frame[i], row.frame);
    assert.ok(Math.abs(Number(run.time[i]) - row.time) < 1e-6);
    for (const name of ['azimuth', 'elevation', 'range']) {
      same(name, run[name][i], row.estimate ? row[name] : NaN);
    }
    same('quality', run.quality[i], row.quality);
    run.level.forEach((level, c) => {
      const [shown, value] = [Number(level[i]), row[`level_${c}`]];
      const isSame = shown === value || Math.abs(shown - value) < 0.0051; // hundredths in the CSV
      assert.ok(isSame, `level ${c} of ${i}: ${shown}, ${value}`);
    });
    run.flags.forEach((flag, k) => assert.equal((run.marks[i] >> k) & 1, row[flag], flag));
    assert.equal((run.marks[i] >> run.flags.length) & 1, row.estimate);
  });
});

check('hovering shows one frame on all plots', 'sound', async ({page, rows}) => {
  for (const [plot, share] of [['azimuth', 0.11], ['flags', 0.52], ['levels', 0.9]]) {
    await hover(page, plot, share);
    const frame = await shownFrame(page);
    assert.ok(Math.abs(frame - share * rows.length) <= 1.5, `frame ${frame} at ${share}`);
    const row = rows[frame];
    const shown = await page.evaluate(() =>
      Object.fromEntries(voxlocPage.charts.map(({id, value, plot}) => [id, {
        text: value.textContent,
        cursor: plot.over.querySelector('.u-cursor-x').getBoundingClientRect().x,
        isHidden: plot.over.querySelector('.u-cursor-x').classList.contains('u-off'),
      }])));
    assert.deepEqual(Object.keys(shown), Plots);
    for (const id of Plots) {
      assert.ok(!shown[id].isHidden, `${id} has no cursor`);
      assert.ok(Math.abs(shown[id].cursor - shown.azimuth.cursor) < 1.5, `${id}: other place`);
    }
    assert.doesNotMatch(await page.$eval('body', (body) => body.innerText), /NaN|undefined/);
    assertShows(shown.azimuth.text, row.azimuth, 1, 'azimuth');
    assertShows(shown.elevation.text, row.elevation, 1, 'elevation');
    assertShows(shown.range.text, row.range, 2, 'range');
    assertShows(shown.quality.text, row.quality, 3, 'quality');
    const levels = shown.levels.text.split('  ');
    assert.equal(levels.length, 6);
    levels.forEach((text, c) => assert.ok(
      Math.abs(Number(text.replace(Minus, '-')) - row[`level_${c}`]) < 0.0561, `level ${c}: ${text}`));
    assert.equal(shown.flags.text.includes('sound'), row.sound === 1);
    assert.equal(/\bvoice(,|$)/.test(shown.flags.text), row.voice === 1);
  }
});

check('hovering over the room shows the frame there', 'sound', async ({page, rows}) => {
  const spot = await page.evaluate(() => {
    const {room} = voxlocPage;
    room.canvas.scrollIntoView();
    const turn = voxlocPage.run.turns[1];
    const [x, y] = room.place(turn.azimuth, turn.range);
    const box = room.canvas.getBoundingClientRect();
    return {x: box.x + x, y: box.y + y, first: turn.first, last: turn.last};
  });
  await page.mouse.move(spot.x, spot.y);
  const frame = await shownFrame(page);
  assert.ok(frame >= spot.first && frame <= spot.last, `${frame} is not in the second turn`);
  assert.equal(rows[frame].voice, 1);
});

check('dragging zooms all plots, a double click shows all again', 'sound', async ({page, rows}) => {
  const end = rows.length * Seconds;
  await drag(page, 'quality', 0.25, 0.5);
  const view = await viewOf(page);
  assert.ok(Math.abs(view.min - 0.25 * end) < 0.1 && Math.abs(view.max - 0.5 * end) < 0.1);
  const isHeld = await page.$eval('#room-from', (element) => element.textContent);
  assert.equal(isHeld, '0:05', 'the room shows another time');
  await page.mouse.click(...Object.values(await centreOf(page, 'range')), {count: 2});
  const all = await viewOf(page);
  assert.ok(all.min === 0 && Math.abs(all.max - end) < 1e-6);
});

async function centreOf(page, plot) {
  const {x, y, width, height} = await areaOf(page, plot);
  return {x: x + width / 2, y: y + height / 2};
}

check('a drag with shift pans', 'sound', async ({page}) => {
  await page.evaluate(() => voxlocPage.setView(5, 9));
  await page.keyboard.down('Shift');
  await drag(page, 'azimuth', 0.75, 0.25);
  await page.keyboard.up('Shift');
  const view = await viewOf(page);
  assert.ok(Math.abs(view.min - 7) < 0.05 && Math.abs(view.max - 11) < 0.05, JSON.stringify(view));
  await page.keyboard.press('Home');
});

check('the wheel with ctrl zooms about the pointer', 'sound', async ({page, rows}) => {
  await hover(page, 'azimuth', 0.75);
  const before = await viewOf(page);
  await page.keyboard.down('Control');
  await page.mouse.wheel({deltaY: -100});
  await page.keyboard.up('Control');
  await page.waitForFunction((max) => voxlocPage.view.max - voxlocPage.view.min < max, {},
    before.max - before.min);
  const {min, max} = await viewOf(page);
  const at = 0.75 * rows.length * Seconds;
  assert.ok(Math.abs((at - min) / (max - min) - 0.75) < 0.01, 'what was under the pointer moved');
  await page.keyboard.press('Home');
});

check('keys step, pan, zoom and show all', 'sound', async ({page, rows}) => {
  const end = rows.length * Seconds;
  await hover(page, 'azimuth', 0.5);
  const frame = await shownFrame(page);
  await page.keyboard.press('ArrowRight');
  await page.keyboard.press('ArrowRight');
  await page.keyboard.press('ArrowLeft');
  assert.equal(await shownFrame(page), frame + 1);
  await page.keyboard.press('+');
  await page.keyboard.press('+');
  const near = await viewOf(page);
  assert.ok(Math.abs(near.max - near.min - end / 4) < 1e-6, 'two steps are a quarter');
  await page.keyboard.down('Shift');
  await page.keyboard.press('ArrowRight');
  await page.keyboard.up('Shift');
  const later = await viewOf(page);
  assert.ok(Math.abs(later.min - near.min - (near.max - near.min) / 4) < 1e-6);
  await page.keyboard.press('-');
  assert.ok((await viewOf(page)).max - later.min > (later.max - later.min) * 1.2);
  await page.keyboard.press('Home');
  assert.deepEqual(await viewOf(page), {min: 0, max: end});
});

check('the buttons do what the keys do', 'sound', async ({page, rows}) => {
  const end = rows.length * Seconds;
  await page.click('#closer');
  const near = await viewOf(page);
  assert.ok(Math.abs(near.max - near.min - end / 2) < 1e-6);
  await page.click('#back');
  assert.ok((await viewOf(page)).min < near.min);
  await page.click('#forth');
  await page.click('#wider');
  await page.click('#all');
  assert.deepEqual(await viewOf(page), {min: 0, max: end});
});

check('a turn leads to its place', 'sound', async ({page}) => {
  const rows = await page.$$('#turns tbody tr');
  const turns = await page.evaluate(() => voxlocPage.run.turns);
  assert.equal(rows.length, turns.length);
  assert.ok(turns.length >= 3);
  await (await rows[1].$('button')).click();
  const view = await viewOf(page);
  assert.ok(view.min < turns[1].from && view.max > turns[1].to);
  assert.ok(view.max - view.min < 3 * (turns[1].to - turns[1].from));
  assert.equal(await shownFrame(page), turns[1].first);
  await page.keyboard.press('Home');
});

const backOf = (page) =>
  page.evaluate(() => getComputedStyle(document.body).backgroundColor);
const pixelsOf = (page) =>
  page.evaluate(() => voxlocPage.charts.map(({plot}) => plot.ctx.canvas.toDataURL()));

check('light and dark: the system decides until the reader does', 'sound', async ({page, dark}) => {
  assert.equal(await backOf(page), 'rgb(255, 255, 255)');
  assert.equal(await backOf(dark.page), 'rgb(20, 23, 26)');
  const before = await pixelsOf(page);
  await page.click('#theme');
  await settled(page);
  assert.equal(await backOf(page), 'rgb(20, 23, 26)');
  const after = await pixelsOf(page);
  before.forEach((picture, k) => assert.notEqual(picture, after[k], `${Plots[k]} kept its colours`));
  await page.keyboard.press('d');
  assert.equal(await backOf(page), 'rgb(255, 255, 255)');
});

check('plots are not empty', 'sound', async ({page}) => {
  const inks = await page.evaluate(() => voxlocPage.charts.map(({id, plot}) => {
    const {left, top, width, height} = plot.bbox;
    const {data} = plot.ctx.getImageData(left, top, width, height);
    const isBlue = (i) => data[i] === 0 && data[i + 1] === 114 && data[i + 2] === 178;
    const isLoud = (i) => data[i] > 200 && data[i + 1] > 160 && data[i + 2] < 120;
    const isInk = id === 'levels' ? isLoud : isBlue;
    let count = 0;
    for (let i = 0; i < data.length; i += 4) if (isInk(i)) count++;
    return count;
  }));
  inks.forEach((ink, k) => assert.ok(ink > 100, `${Plots[k]} shows ${ink} pixels`));
});

check('paper is light, and the screen as before afterwards', 'dark', async ({page}) => {
  const pages = await page.pdf({format: 'A4'});
  assert.ok(pages.length > 20000);
  await settled(page);
  assert.equal(await backOf(page), 'rgb(20, 23, 26)');
  await page.evaluate(() => dispatchEvent(new Event('beforeprint')));
  assert.equal(await backOf(page), 'rgb(255, 255, 255)');
  await page.evaluate(() => dispatchEvent(new Event('afterprint')));
});

check('nothing is wider than a phone', 'phone', async ({page}) => {
  const width = await page.evaluate(() => document.documentElement.scrollWidth);
  assert.equal(width, 390);
  const buttons = await page.$$eval('#tools button:not([hidden])', (list) =>
    list.map((button) => button.getBoundingClientRect().height));
  for (const height of buttons) assert.ok(height >= 40, 'a finger misses it');
});

check('a finger moves the cursor, two zoom', 'phone', async ({page}) => {
  const {x, y, width, height} = await areaOf(page, 'azimuth');
  const line = y + height / 2;
  await page.touchscreen.tap(x + width * 0.3, line);
  const frame = await shownFrame(page);
  assert.ok(Math.abs(frame - 0.3 * 470) < 4, `frame ${frame}`);
  const before = await viewOf(page);
  const one = await page.touchscreen.touchStart(x + width * 0.45, line);
  const two = await page.touchscreen.touchStart(x + width * 0.55, line);
  await one.move(x + width * 0.3, line);
  await two.move(x + width * 0.7, line);
  await one.end();
  await two.end();
  const after = await viewOf(page);
  const share = (after.max - after.min) / (before.max - before.min);
  assert.ok(share > 0.2 && share < 0.35, `four times as near is ${share}`);
  await page.click('#all');
});

check('space plays the sound and the cursor follows', 'sound', async ({page}) => {
  await page.evaluate(() => {
    document.activeElement.blur();
    voxlocPage.sound.seek(2);
  });
  await page.keyboard.press(' ');
  await page.waitForFunction(() => voxlocPage.index * 2048 / 48000 > 2.3, {timeout: 10000});
  assert.equal(await page.$eval('#play', (button) => button.textContent), 'Pause');
  await page.keyboard.press(' ');
  await page.waitForFunction(() => voxlocPage.sound.audio.paused);
  const {time, heard, length} = await page.evaluate(() => ({
    time: voxlocPage.run.time[voxlocPage.index],
    heard: voxlocPage.sound.audio.currentTime,
    length: voxlocPage.sound.audio.duration,
  }));
  assert.ok(Math.abs(time - heard) < 0.3, `cursor at ${time}, sound at ${heard}`);
  assert.ok(Math.abs(length - 470 * Seconds) < 0.1, `the sound lasts ${length} s`);
});

check('without sound there is nothing to play', 'dark', async ({page}) => {
  assert.equal(await page.$eval('#play', (button) => button.hidden), true);
  await page.keyboard.press(' ');
});

check('two runs are over each other, and their worst frames lead there', 'both', async ({page, rows, others}) => {
  const text = await page.$eval('#differences p', (element) => element.textContent);
  assert.match(text, /^470 frames compared with plain\.csv, \d+ differ, \d+ beyond the tolerance of 1°\.$/);
  const table = await page.$$('#differences tbody tr');
  assert.equal(table.length, 20);
  await table[3].click();
  const frame = await shownFrame(page);
  const cell = await table[3].$eval('button', (button) => button.textContent);
  assert.equal(String(frame), cell);
  const [here, there] = (await page.$eval('#quality output', (one) => one.textContent)).split(' | ');
  assertShows(here, others[frame].quality, 3, 'this run');
  assertShows(there, rows[frame].quality, 3, 'the other run');
});

check('an hour opens in three seconds and zooms without a stutter', 'hour', async ({page, seconds}) => {
  const frames = await page.evaluate(() => voxlocPage.run.count);
  assert.ok(frames > 83900, `${frames} frames`);
  assert.ok(seconds < 3, `opened in ${seconds} s`);
  const times = await page.evaluate(async () => {
    const picture = () => new Promise((done) => requestAnimationFrame(done));
    const times = [];
    for (let step = 0; step < 40; step++) {
      voxlocPage.zoom(step < 20 ? 0.8 : 1.25, 1800);
      const began = performance.now();
      voxlocPage.draw();
      await Promise.resolve(); // uPlot draws behind the present task
      times.push(performance.now() - began);
      await picture();
    }
    return times.sort((a, b) => a - b);
  });
  const [middle, worst] = [times[20], times[38]];
  console.log(`  an hour: opened in ${seconds.toFixed(2)} s; a step of zoom ` +
    `${middle.toFixed(0)} ms, ${worst.toFixed(0)} ms at worst`);
  assert.ok(middle < 60, `half of the steps take more than ${middle} ms`);
});

check('a run without a frame is a page, too', 'empty', async ({page}) => {
  assert.equal(await page.$eval('#turn-count', (one) => one.textContent.slice(0, 4)), '0 in');
  await page.keyboard.press('ArrowRight');
  await page.keyboard.press('+');
  await settled(page);
  assert.doesNotMatch(await page.$eval('body', (body) => body.innerText), /NaN|undefined/);
});

// --- The run -------------------------------------------------------------------------------------

function writeRuns() {
  const raw = spawnSync(options.talkers, {maxBuffer: 1 << 28}).stdout;
  writeFileSync(join(folder, 'talkers.raw'), raw);
  const run = (args, status) => locate(resolve(options.program), folder, args, status);
  run(['-o', 'plain.csv', '--report', 'sound.html', '--embed-audio']);
  run(['-o', 'again.csv', '--report', 'plain.html']);
  run(['-o', 'other.csv', '--channels', '0,1,2,3,5,4', '--compare', 'plain.csv', '--tolerance', '1',
    '--report', 'both.html'], 1);
  run(['-o', 'empty.csv', '--start', '1000', '--report', 'empty.html']);
  stretchToAnHour(join(folder, 'plain.html'), join(folder, 'hour.html'));
}

async function openAll() {
  const csv = (name) => readCsv(join(folder, name));
  return {
    sound: await browser.open(urlOf('sound.html')),
    dark: await browser.open(urlOf('plain.html'), {theme: 'dark'}),
    phone: await browser.open(urlOf('plain.html'), {width: 390, height: 844, isMobile: true}),
    both: {...(await browser.open(urlOf('both.html'))), others: csv('other.csv')},
    hour: await browser.open(urlOf('hour.html')),
    empty: await browser.open(urlOf('empty.html')),
  };
}

async function runCheck({name, on, run}, opened, rows) {
  await opened[on].page.bringToFront();
  try {
    await run({...opened[on], rows, dark: opened.dark});
    console.log(`ok      ${name}`);
    return true;
  } catch (error) {
    console.log(`FAILED  ${name}: ${error.message}`);
    return false;
  }
}

let failed = 0;
let passed = 0;
try {
  writeRuns();
  const opened = await openAll();
  const rows = readCsv(join(folder, 'plain.csv'));
  check('no page complains or asks for anything', 'sound', async () => {
    const all = Object.entries(opened).map(([name, {complaints}]) => [name, complaints]);
    assert.deepEqual(all.filter(([, complaints]) => complaints.length), []);
  });
  for (const one of checks) {
    if (await runCheck(one, opened, rows)) passed++;
    else failed++;
  }
  for (const [name, {page}] of options.shots ? Object.entries(opened) : []) {
    await page.bringToFront();
    await page.screenshot({path: join(options.shots, `${name}.png`), fullPage: true});
  }
} finally {
  await browser.close();
  rmSync(folder, {recursive: true, force: true});
}
console.log(`${passed} passed, ${failed} failed`);
process.exit(failed ? 1 : 0);
