// The live page in a headless browser:
//
//     node page.mjs --program voxloc --talker verify_talkerStream --browser chromium
//         --devices libverify_devices.so [--pictures FOLDER]
//
// Prints "skipped: ..." where the browser or its driver is missing.
import assert from "node:assert/strict";
import {execFileSync, spawn} from "node:child_process";
import {existsSync, mkdtempSync, readFileSync, rmSync, writeFileSync} from "node:fs";
import {createServer} from "node:http";
import {tmpdir} from "node:os";
import {join} from "node:path";
import {parseArgs} from "node:util";

const {values: given} = parseArgs({options: {
  program: {type: "string"}, talker: {type: "string"}, browser: {type: "string"},
  devices: {type: "string"}, pictures: {type: "string"},
}});

let puppeteer;
try {
  puppeteer = (await import("puppeteer-core")).default;
} catch {
  console.log("skipped: puppeteer-core is missing; npm ci in verify/gates/app installs it");
  process.exit(0);
}
if (!existsSync(given.browser)) {
  console.log(`skipped: there is no browser ${given.browser}`);
  process.exit(0);
}

const channels = 6, frameBytes = 2048 * channels * 3, frameTime = 2048 / 48;
const azimuths = [-40, 30]; // of the talker, two seconds each
const sound = execFileSync(given.talker, ["aster", "2", ...azimuths.map(String)],
  {maxBuffer: 1 << 28});
const half = Math.floor(sound.length / frameBytes / 2);
const folder = mkdtempSync(join(tmpdir(), "voxloc-live-"));
const sleep = (ms) => new Promise((resolve) => setTimeout(resolve, ms));

// --- The program ---------------------------------------------------------------------------------

class Program {
  // words: further options; a port of 0 is any
  static start(port, ...words) {
    return Program.listen({}, "-", "--raw", "S24_3", "--serve", String(port), ...words);
  }

  // On ALSA's device that reads a file; the faults are those of devices.c.
  static startOnDevice(faults) {
    const file = join(folder, "walk.s16"), config = join(folder, "asound.conf");
    writeFileSync(file, sound.filter((_, at) => at % 3 > 0)); // the upper 16 of 24 bits
    writeFileSync(config, "pcm.nothing { type null }\n" +
      `pcm.walk { type file slave.pcm nothing file /dev/null infile ${file} format raw }\n`);
    return Program.listen({ALSA_CONFIG_PATH: config, LD_PRELOAD: given.devices, ...faults,
      ASAN_OPTIONS: "verify_asan_link_order=0"},
    "--capture", "walk", "--raw", "S16", "--serve", "0");
  }

  static async listen(environment, ...words) {
    const self = new Program();
    self.run = spawn(given.program, ["live", "--array", "aster", "--raw-channels",
      String(channels), ...words], {cwd: folder, env: {...process.env, ...environment}});
    self.run.stdin.on("error", () => {});
    self.ended = new Promise((resolve) => self.run.on("exit", resolve));
    self.said = "";
    await new Promise((resolve, reject) => {
      self.run.on("exit", () => reject(new Error(`it ended: ${self.said}`)));
      self.run.stderr.on("data", (text) => {
        self.said += text;
        if (/:\d+\/\n/.test(self.said)) resolve();
      });
    });
    self.port = Number(/:(\d+)\/\n/.exec(self.said)[1]);
    self.url = `http://127.0.0.1:${self.port}/`;
    return self;
  }

  write(frame, silentChannel) {
    const bytes = Buffer.from(sound.subarray(frame * frameBytes, (frame + 1) * frameBytes));
    if (silentChannel !== undefined) {
      for (let at = silentChannel * 3; at < bytes.length; at += channels * 3) {
        bytes.fill(0, at, at + 3);
      }
    }
    this.run.stdin.write(bytes);
  }

  // As many frames as real time has, from one of the two places.
  async talk(which, seconds, silentChannel) {
    const began = performance.now();
    for (let n = 0; n * frameTime < seconds * 1000; ++n) {
      this.write(which * half + n % half, silentChannel);
      await sleep(Math.max(0, began + (n + 1) * frameTime - performance.now()));
    }
  }

  async end() {
    this.run.stdin.end();
    const timer = setTimeout(() => this.run.kill("SIGKILL"), 5000);
    await this.ended;
    clearTimeout(timer);
  }
}

// --- The browser ---------------------------------------------------------------------------------

const profile = join(folder, "profile");
const browser = await puppeteer.launch({executablePath: given.browser, headless: true,
  userDataDir: profile, args: ["--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync",
    "--host-resolver-rules=MAP rebound.example 127.0.0.1"]});

// A page that notes what must not be: errors, and requests to elsewhere.
async function open(program, {width = 1280, height = 900, path = ""} = {}) {
  const page = await browser.newPage();
  page.wrong = [];
  page.on("console", (message) => {
    if (["error", "warn"].includes(message.type())) page.wrong.push(message.text());
  });
  page.on("pageerror", (error) => page.wrong.push(error.message));
  page.on("request", (request) => {
    if (!request.url().startsWith(program.url)) page.wrong.push(`asks ${request.url()}`);
  });
  await page.setViewport({width, height});
  await page.goto(program.url + path);
  return page;
}

const read = (page, id) => page.$eval("#" + id, (element) => element.textContent);
const number = async (page, id) =>
  Number((await read(page, id)).replace("−", "-").replace(/[^\d.-]/g, ""));
const picture = (page, name) =>
  given.pictures && page.screenshot({path: join(given.pictures, name + ".png"), fullPage: true});

async function eventually(what, test, seconds = 8) {
  const until = performance.now() + seconds * 1000;
  let seen;
  while (performance.now() < until) {
    seen = await test();
    if (seen === true) return;
    await sleep(50);
  }
  assert.fail(`${what}: ${JSON.stringify(seen)}`);
}

const becomes = (page, id, wanted, seconds) => eventually(id, async () => {
  const seen = await read(page, id);
  return wanted.test(seen) || seen;
}, seconds);

// Where the radar shows the talker, as an azimuth in degrees.
const radarAzimuth = (page) => page.evaluate(() => {
  const dot = document.getElementById("dot");
  return Math.atan2(-dot.getAttribute("cx"), -dot.getAttribute("cy")) * 180 / Math.PI;
});

// --- Checks --------------------------------------------------------------------------------------

async function radarFollows() {
  const program = await Program.start(0);
  const page = await open(program);
  for (const [which, azimuth] of azimuths.entries()) {
    await program.talk(which, 1.5);
    await sleep(200);
    const shown = await radarAzimuth(page), told = await number(page, "azimuth");
    assert.ok(Math.abs(shown - azimuth) < 4, `talker at ${azimuth}, radar at ${shown}`);
    assert.ok(Math.abs(told - shown) < 0.5, `radar at ${shown}, number ${told}`);
    assert.ok(Math.abs(await number(page, "range") - 2) < 1);
    assert.equal(await page.$eval("#talker", (group) => group.getAttribute("class")), "");
    assert.ok(await page.$eval("[data-flag=voice]", (light) => light.classList.contains("on")));
  }
  assert.ok(await page.$$eval("#trail circle", (dots) => dots.length) > 40);
  const levels = await page.$$eval("#levels .value",
    (values) => values.map((value) => value.textContent));
  assert.equal(levels.length, channels);
  assert.ok(levels.every((level) => /^−[1-4]\d dB$/.test(level)), String(levels));
  await picture(page, "desktop");
  // Both plots hold something.
  assert.ok(await page.$eval("#history", (canvas) => {
    const data = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height).data;
    const seen = new Set();
    for (let i = 0; i < data.length; i += 4) {
      if (data[i + 3] === 255) seen.add(`${data[i]},${data[i + 1]},${data[i + 2]}`);
    }
    return seen.has("0,114,178");
  }), "the azimuths are drawn in blue");
  assert.deepEqual(page.wrong, []);
  await page.close();
  await program.end();
}

async function deadMicrophoneStandsOut() {
  const program = await Program.start(0);
  const page = await open(program);
  await program.talk(0, 3, 2);
  await sleep(300);
  const dead = await page.$$eval("#levels .bar", (rows) =>
    rows.map((row) => row.classList.contains("dead") ? row.textContent : ""));
  assert.deepEqual(dead, ["", "", "mic 2silent", "", "", ""]);
  assert.match(program.said, /microphone 2 is silent/);
  await picture(page, "dead");
  await page.close();
  await program.end();
}

async function stillStreamIsTold() {
  const program = await Program.start(0);
  const page = await open(program);
  await program.talk(0, 0.5);
  await becomes(page, "state", /^running$/);
  await becomes(page, "alarm", /stands still: no sound for [1-9]/);
  await picture(page, "still");
  await program.talk(0, 0.5);
  assert.equal(await read(page, "state"), "running");
  assert.equal(await page.$eval("#alarm", (alarm) => alarm.hidden), true);
  await page.close();
  await program.end();
}

// The file is read faster than sound comes: the device is gone before the page is open.
async function unpluggedDeviceIsTold() {
  const program = await Program.startOnDevice({VOXLOC_GONE_AT: "12", VOXLOC_GONE_OPENS: "5"});
  const page = await open(program);
  await becomes(page, "state", /^no device$/);
  assert.match(await read(page, "alarm"), /^The device is gone \(No such device\); it is opened/);
  assert.ok(await page.$eval("body", (body) => body.classList.contains("stale")));
  await picture(page, "unplugged");
  await becomes(page, "state", /^running$/, 15); // after 6.2 s
  assert.equal(await page.$eval("#alarm", (alarm) => alarm.hidden), true);
  program.run.kill("SIGINT");
  await becomes(page, "state", /^ended$/);
  assert.deepEqual(page.wrong, []);
  await page.close();
  await program.end();
}

async function linksAgain() {
  const program = await Program.start(0);
  const page = await open(program);
  await program.talk(0, 0.5);
  await program.end();
  await becomes(page, "state", /^ended$/);
  const again = await Program.start(program.port);
  await eventually("running again", async () => {
    await again.talk(1, 0.3);
    const state = await read(page, "state"), azimuth = await number(page, "azimuth");
    return state === "running" && Math.abs(azimuth - 30) < 4 || [state, azimuth];
  }, 15);
  await page.close();
  await again.end();
}

async function pauses() {
  const program = await Program.start(0);
  const page = await open(program);
  await program.talk(0, 1);
  await page.keyboard.press("Space");
  await sleep(100);
  const before = [await read(page, "clock"), await radarAzimuth(page)];
  await program.talk(1, 1);
  assert.deepEqual([await read(page, "clock"), await radarAzimuth(page)], before);
  assert.equal(await read(page, "state"), "paused");
  await page.click("#pause");
  await sleep(200);
  assert.ok(Math.abs(await radarAzimuth(page) - 30) < 4);
  await page.close();
  await program.end();
}

async function marks() {
  const program = await Program.start(0, "--record", "walk.rec");
  const page = await open(program), other = await open(program);
  await program.talk(0, 1);
  await page.bringToFront();
  await page.keyboard.press("m");
  await page.keyboard.type("door opens");
  await page.keyboard.press("Enter");
  await becomes(page, "markSaid", /door opens/);
  const lines = readFileSync(join(folder, "walk.rec.marks.jsonl"), "utf8").trim().split("\n");
  assert.equal(lines.length, 1);
  assert.equal(JSON.parse(lines[0]).label, "door opens");
  await eventually("the others see it", () =>
    other.evaluate(() => marks.length === 1 && marks[0].label === "door opens"));
  assert.deepEqual(page.wrong, []);
  await page.close();
  await other.close();
  await program.end();
  const without = await Program.start(0);
  const plain = await open(without);
  await eventually("disabled", () => plain.$eval("#mark", (button) => button.disabled));
  await plain.close();
  await without.end();
}

async function fitsATelephone() {
  const program = await Program.start(0);
  const page = await open(program, {width: 390, height: 844});
  await page.emulateMediaFeatures([{name: "prefers-color-scheme", value: "dark"}]);
  await program.talk(0, 1);
  const sizes = await page.evaluate(() => [document.documentElement.scrollWidth, innerWidth,
    getComputedStyle(document.body).backgroundColor]);
  assert.equal(sizes[0], sizes[1], "nothing sticks out");
  assert.equal(sizes[2], "rgb(20, 23, 26)");
  const radar = await page.$eval("#radar", (svg) => svg.getBoundingClientRect().width);
  assert.ok(radar > 330, `radar ${radar}`);
  await picture(page, "telephone");
  await page.keyboard.press("t");
  const light = await page.evaluate(() => getComputedStyle(document.body).backgroundColor);
  assert.equal(light, "rgb(246, 247, 248)");
  await page.close();
  await program.end();
}

// Everything that the page of another site may try.
async function foreignPagesLearnNothing() {
  const program = await Program.start(0, "--record", "foreign.rec");
  await program.talk(0, 0.5);
  const site = createServer((_, response) => {
    response.setHeader("Content-Type", "text/html");
    response.end("<!doctype html><title>foreign</title><body></body>");
  });
  await new Promise((resolve) => site.listen(0, "127.0.0.1", resolve));
  const page = await browser.newPage();
  await page.goto(`http://127.0.0.1:${site.address().port}/`);
  const learnt = await page.evaluate(async (url) => {
    const result = {};
    const reads = async (path, options) => {
      try {
        const answer = await fetch(url + path, options);
        return answer.type === "opaque" ? "opaque" : (await answer.text()).slice(0, 40);
      } catch {
        return "refused";
      }
    };
    result.fetch = await reads("events");
    result.opaque = await reads("events", {mode: "no-cors"});
    result.mark = await reads("mark?label=foreign", {headers: {"X-Voxloc-Mark": "1"}});
    result.simpleMark = await reads("mark?label=foreign", {mode: "no-cors"});
    result.post = await reads("mark?label=foreign", {method: "POST", mode: "no-cors"});
    result.events = await new Promise((resolve) => {
      const events = new EventSource(url + "events");
      events.onmessage = () => resolve("heard");
      events.addEventListener("hello", () => resolve("heard"));
      events.onerror = () => resolve("refused");
    });
    const load = (name, attribute, path) => new Promise((resolve) => {
      const element = document.createElement(name);
      element[attribute] = url + path;
      element.onload = () => resolve("loaded");
      element.onerror = () => resolve("refused");
      document.body.append(element);
    });
    result.script = await load("script", "src", "live.js");
    result.image = await load("img", "src", "favicon.svg");
    const frame = document.createElement("iframe");
    frame.src = url;
    await new Promise((resolve) => {
      frame.onload = resolve;
      document.body.append(frame);
    });
    try {
      result.frame = frame.contentDocument === null ? "refused" : "read";
    } catch {
      result.frame = "refused";
    }
    return result;
  }, program.url);
  assert.ok(["refused", "opaque"].includes(learnt.opaque), learnt.opaque);
  for (const way of ["fetch", "mark", "events", "script", "image", "frame"]) {
    assert.equal(learnt[way], "refused", way);
  }
  const framed = page.frames().find((frame) => frame !== page.mainFrame());
  const isShown = framed && await framed.evaluate(() => document.getElementById("radar") !== null)
    .catch(() => false);
  assert.ok(!isShown, "the page is not shown in a frame");
  assert.equal(readFileSync(join(folder, "foreign.rec.marks.jsonl"), "utf8"), "");
  // A name of theirs that leads to this machine.
  const answer = await page.goto(`http://rebound.example:${program.port}/events`);
  assert.equal(answer.status(), 403);
  await page.close();
  site.close();
  await program.end();
}

async function tokenOpensThePage() {
  const token = "browser-token-0123456789", file = join(folder, "token");
  writeFileSync(file, token + "\n", {mode: 0o600});
  const program = await Program.start("127.0.0.1:0", "--token-file", file);
  const stranger = await browser.newPage();
  assert.equal((await stranger.goto(program.url)).status(), 401);
  await stranger.close();
  const page = await open(program, {path: "?token=" + token});
  await program.talk(0, 1);
  assert.ok(Math.abs(await radarAzimuth(page) + 40) < 4);
  assert.equal(page.url(), program.url, "the token does not stay in the address");
  assert.equal(await page.evaluate(() => document.cookie), "", "scripts do not see the cookie");
  assert.deepEqual(page.wrong, []);
  await page.close();
  await program.end();
}

async function checksTheArray() {
  const program = await Program.start(0);
  const page = await open(program);
  await program.talk(0, 1);
  await page.click("#check");
  await becomes(page, "checkSaid", /0\.0 s of 10 s of voice/);
  assert.ok(await page.$eval("#check", (button) => button.disabled));
  await program.talk(0, 3);
  await becomes(page, "checkSaid", /[1-3]\.\d s of 10 s of voice/);
  assert.deepEqual(page.wrong, []);
  await page.close();
  await program.end();
}

let failed = 0;
for (const check of [radarFollows, deadMicrophoneStandsOut, stillStreamIsTold,
  unpluggedDeviceIsTold, linksAgain, pauses, marks, checksTheArray, fitsATelephone,
  foreignPagesLearnNothing, tokenOpensThePage]) {
  try {
    await check();
    console.log("ok      " + check.name);
  } catch (error) {
    ++failed;
    console.log("FAILED  " + check.name + "\n        " + error.stack);
  }
}
await browser.close();
rmSync(folder, {recursive: true, force: true, maxRetries: 5});
process.exit(failed === 0 ? 0 : 1);
