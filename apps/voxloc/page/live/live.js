// The live page: draws what /events tells. Nothing is asked of any other place.
"use strict";

// Where a record's values lie in its list.
const Field = {
  frame: 0, time: 1, azimuth: 2, elevation: 3, range: 4, quality: 5, flags: 6, hasEstimate: 7,
  ultrasound: 8, levels: 9,
};
const FlagText = {
  voice: "voice", td_voice: "voice (time)", sound: "sound", far_end: "far end",
  noise_input: "noise frozen", ultrasound: "ultrasound", position_valid: "position valid",
};
const VoiceBit = 0, UltrasoundBit = 5;
const BestQuality = 1.5; // the upper end of the scale
const TrailSeconds = 10, StillAfter = 1000; // ms without a frame
const RadarScales = [3, 5, 10]; // m
const Svg = "http://www.w3.org/2000/svg";

const byId = (id) => document.getElementById(id);
const bit = (word, n) => (word >>> n) & 1;
const text = (id, value) => {
  const element = byId(id);
  if (element.textContent !== value) element.textContent = value;
};
const fixed = (value, digits, unit) =>
  value === null ? "–" : value.toFixed(digits).replace("-", "−") + unit;

let hello = null; // what does not change
let heard = []; // the last minutes
let records = []; // the same, or what they were when the page was paused
let marks = [];
let status = null;
let isPaused = false, isLinked = false, isDrawn = true, hasEnded = false;
let lastFrameAt = performance.now();
let radarScale = 3;
let flagLights = [], meters = [];

// --- Numbers, lights, levels ---------------------------------------------------------------------

function drawNumbers(now) {
  const isHere = isShown(now), quality = now[Field.quality];
  text("azimuth", isHere ? fixed(now[Field.azimuth], 1, "°") : "–");
  text("elevation", isHere && hello.hasElevation ? fixed(now[Field.elevation], 1, "°") : "–");
  text("range", isHere ? fixed(now[Field.range], 1, " m") : "–");
  text("quality", fixed(quality, 2, ""));
  byId("qualityMeter").querySelector(".fill").setAttribute("width",
    (100 * Math.max(0, Math.min((quality || 0) / BestQuality, 1))).toFixed(1));
  for (const [n, light] of flagLights) {
    const isOn = bit(now[Field.flags], n) === 1;
    light.classList.toggle("on", isOn);
    light.setAttribute("aria-label", light.textContent + (isOn ? ": on" : ": off"));
  }
  const ultrasound = now[Field.ultrasound];
  text("ultrasound", `ultrasound ${fixed(ultrasound, 0, " dB")}`);
}

function drawLevels(now) {
  meters.forEach((meter, c) => {
    const level = now[Field.levels + c];
    const state = status ? status.microphones[c] : "alive";
    const width = level === null ? 0 : Math.max(0, Math.min(100, 100 + level));
    meter.fill.setAttribute("width", width.toFixed(1));
    meter.value.textContent = state !== "alive" ? state : level === null ? "silent" :
      fixed(level, 0, " dB");
    meter.row.classList.toggle("dead", state !== "alive");
  });
}

function makeLights() {
  const list = byId("flags");
  list.replaceChildren();
  flagLights = hello.flags.map(([n, name]) => {
    const light = document.createElement("li");
    light.textContent = FlagText[name] || name;
    light.dataset.flag = name;
    if (n === UltrasoundBit) light.classList.add("warn");
    list.append(light);
    return [n, light];
  });
}

function makeMeters() {
  const levels = byId("levels");
  levels.replaceChildren();
  meters = hello.microphones.map((at, c) => {
    const row = document.createElement("div");
    row.className = "bar";
    const name = document.createElement("span"), value = document.createElement("span");
    name.className = "name";
    name.textContent = `mic ${c}`;
    value.className = "value";
    row.append(name);
    const meter = add(row, "svg", {
      class: "meter", viewBox: "0 0 100 10", preserveAspectRatio: "none",
    });
    add(meter, "rect", {class: "track", width: 100, height: 10});
    const fill = add(meter, "rect", {class: "fill", width: 0, height: 10});
    row.append(value);
    levels.append(row);
    return {row, fill, value};
  });
}

// --- State ---------------------------------------------------------------------------------------

function drawState() {
  const still = performance.now() - lastFrameAt;
  const seconds = Math.round(still / 1000);
  let state = "running", alarm = "", label = "running";
  if (!isLinked) {
    state = "bad";
    label = hasEnded ? "ended" : "not connected";
    alarm = hasEnded ? "The run has ended. The page goes on when another one begins." :
      "The connection is lost; trying again.";
  } else if (status && status.state === "waiting") {
    state = "bad";
    label = "no device";
    alarm = `The device is gone (${status.reason}); it is opened again when it comes back.`;
  } else if (still > StillAfter) {
    state = "bad";
    label = "standing still";
    alarm = `The stream stands still: no sound for ${seconds} s.`;
  }
  if (status && status.unrecorded > 0) {
    alarm += ` The recording lacks ${status.unrecorded} frames: is the disk full?`;
  }
  if (isPaused && state === "running") state = label = "paused";
  const pill = byId("state");
  pill.className = "pill " + state;
  document.body.classList.toggle("stale", state === "bad");
  text("state", label);
  text("alarm", alarm.trim());
  byId("alarm").hidden = alarm === "";
}

function drawFooter(now) {
  const time = Math.floor(now[Field.time]), two = (n) => String(n).padStart(2, "0");
  text("clock", `frame ${now[Field.frame]}, ${Math.floor(time / 3600)}:` +
    `${two(Math.floor(time / 60) % 60)}:${two(time % 60)}`);
  if (!status) return;
  text("overruns", `overruns ${status.overruns}`);
  byId("overruns").classList.toggle("warn", status.overruns > 0);
  text("reopened", `device reopened ${status.reopened}`);
  byId("reopened").classList.toggle("warn", status.reopened > 0);
}

function draw() {
  requestAnimationFrame(draw);
  drawState();
  if (isDrawn || !hello || records.length === 0) return;
  isDrawn = true;
  const now = records[records.length - 1], trail = trailOf(now);
  chooseScale(trail, now);
  drawTrail(trail, now);
  drawTalker(now);
  drawNumbers(now);
  drawLevels(now);
  drawHistory();
  drawFooter(now);
}

// --- Events --------------------------------------------------------------------------------------

function take(more) {
  if (more.length === 0) return;
  heard = heard.concat(more).slice(-hello.historyFrames);
  lastFrameAt = performance.now();
  if (isPaused) return;
  records = heard;
  isDrawn = false;
}

function begin(about) {
  hello = about;
  heard = [];
  marks = [];
  hasEnded = false;
  text("about", `${about.array} · ${about.input}`);
  text("version", `voxloc ${about.version}`);
  text("recording", about.recording ? `recording ${about.recording}` : "not recording");
  const canMark = about.recording !== "";
  byId("label").disabled = byId("mark").disabled = !canMark;
  byId("label").placeholder = canMark ? "what happens now" : "needs --record FILE";
  makeLights();
  makeMeters();
  drawRings();
}

function connect() {
  const events = new EventSource("/events");
  const on = (name, handle) =>
    events.addEventListener(name, (event) => handle(JSON.parse(event.data)));
  events.onopen = () => {
    isLinked = true;
    lastFrameAt = performance.now();
  };
  on("hello", begin);
  on("history", take);
  on("frames", take);
  on("message", (record) => take([record]));
  on("mark", (mark) => {
    marks.push(mark);
    isDrawn = false;
  });
  on("status", (news) => {
    status = news;
    hasEnded = news.state === "ended";
    isDrawn = false;
  });
  events.onerror = () => {
    isLinked = false;
    // It tries again by itself, except after an answer other than 200.
    if (events.readyState === EventSource.CLOSED) setTimeout(connect, 2000);
  };
}

// --- Check my array ------------------------------------------------------------------------------

const VerdictText = {
  sound: "The array is sound.", faults: "There are faults:",
  "cannot tell": "It cannot be told:",
};

function showCheck(news) {
  const isRunning = news.state === "gathering" || news.state === "judging";
  byId("check").disabled = isRunning;
  const found = news.diagnosis;
  text("checkSaid", news.state === "gathering" ?
    `${news.voice.toFixed(1)} s of ${news.needed} s of voice` :
    news.state === "judging" ? "looking at it" : found ? VerdictText[found.verdict] : "");
  const lines = found ? [...found.findings.map((one) => one.text), ...found.notes] : [];
  byId("findings").replaceChildren(...lines.map((line) => {
    const item = document.createElement("li");
    item.textContent = line + ".";
    return item;
  }));
  if (isRunning) setTimeout(askCheck, 1000);
}

async function askCheck(path = "/check") {
  // The header is what no page elsewhere can send.
  const answer = await fetch(path, {headers: {"X-Voxloc-Mark": "1"}}).catch(() => null);
  if (answer && answer.ok) return showCheck(await answer.json());
  byId("check").disabled = false;
  text("checkSaid", answer ? (await answer.text()).trim() : "The program does not answer.");
}

// --- Controls ------------------------------------------------------------------------------------

function pause() {
  isPaused = !isPaused;
  byId("pause").setAttribute("aria-pressed", String(isPaused));
  text("pause", isPaused ? "Go on" : "Pause");
  records = heard;
  isDrawn = false;
}

async function mark(event) {
  event.preventDefault();
  const label = byId("label").value.trim() || "mark";
  // The header is what no page elsewhere can send.
  const answer = await fetch("/mark?label=" + encodeURIComponent(label), {
    headers: {"X-Voxloc-Mark": "1"},
  }).catch(() => null);
  text("markSaid", answer && answer.ok ? `“${label}” is in the recording` :
    answer ? (await answer.text()).trim() : "The program does not answer.");
  if (answer && answer.ok) byId("label").value = "";
}

function setTheme(isDark) {
  document.documentElement.classList.toggle("dark", isDark);
  text("theme", isDark ? "Light" : "Dark");
  isDrawn = false;
}

function onKey(event) {
  const isTyping = event.target instanceof HTMLInputElement;
  if (isTyping || event.ctrlKey || event.altKey || event.metaKey) return;
  if (event.key === " " && !(event.target instanceof HTMLButtonElement)) {
    event.preventDefault();
    pause();
  }
  if (event.key === "t") byId("theme").click();
  if (event.key === "m") {
    event.preventDefault();
    byId("label").focus();
  }
}

function start() {
  // The token has become a cookie; it need not stay in the address.
  if (location.search) history.replaceState(null, "", "/");
  const system = matchMedia("(prefers-color-scheme: dark)");
  setTheme(system.matches);
  system.addEventListener("change", () => setTheme(system.matches));
  byId("theme").addEventListener("click", () =>
    setTheme(!document.documentElement.classList.contains("dark")));
  byId("pause").addEventListener("click", pause);
  byId("markForm").addEventListener("submit", mark);
  byId("check").addEventListener("click", () => askCheck("/check/start"));
  document.addEventListener("keydown", onKey);
  new ResizeObserver(() => { isDrawn = false; }).observe(byId("history"));
  drawRings();
  connect();
  askCheck();
  draw();
}

start();
