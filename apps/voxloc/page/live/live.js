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
const VoiceBit = 0, ValidBit = 7, UltrasoundBit = 5;
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
let records = []; // the last minutes
let marks = [];
let status = null;
let isPaused = false, isLinked = false, isDrawn = true, hasEnded = false;
let lastFrameAt = performance.now();
let radarScale = 3;
let flagLights = [], meters = [];

// --- Radar ---------------------------------------------------------------------------------------

// From above: x, ahead of the array, up the page; y to the left.
function place(azimuth, range) {
  const length = Math.min(range / radarScale, 1.06) * 100, angle = azimuth * Math.PI / 180;
  return {x: -length * Math.sin(angle), y: -length * Math.cos(angle)};
}

function add(parent, name, attributes, content) {
  const element = document.createElementNS(Svg, name);
  for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
  if (content !== undefined) element.textContent = content;
  parent.append(element);
  return element;
}

function drawRings() {
  const rings = byId("rings");
  rings.replaceChildren();
  add(rings, "path", {class: "sector", d: "M-100 0A100 100 0 0 1 100 0Z"});
  const step = radarScale === 10 ? 2 : 1;
  for (let metres = step; metres <= radarScale; metres += step) {
    const r = metres / radarScale * 100;
    add(rings, "path", {d: `M${-r} 0A${r} ${r} 0 0 1 ${r} 0`});
    add(rings, "text", {x: r, y: 8, "text-anchor": "middle"}, `${metres} m`);
    add(rings, "text", {x: -r, y: 8, "text-anchor": "middle"}, `${metres} m`);
  }
  for (let angle = -90; angle <= 90; angle += 30) {
    const end = place(angle, radarScale);
    add(rings, "line", {x1: 0, y1: 0, x2: end.x, y2: end.y});
    if (Math.abs(angle) === 90) continue;
    const label = (angle > 0 ? "+" : "") + String(angle).replace("-", "−") + "°";
    const anchor = angle === 0 ? "middle" : angle > 0 ? "end" : "start"; // away from the arc
    add(rings, "text", {x: end.x * 1.03, y: end.y * 1.03, "text-anchor": anchor}, label);
  }
  drawMicrophones();
}

// Drawn larger than they are: the array is a few centimetres wide.
function drawMicrophones() {
  const group = byId("microphones");
  group.replaceChildren();
  if (!hello) return;
  const width = Math.max(...hello.microphones.map((at) => Math.abs(at[1])), 0.01);
  for (const [x, y] of hello.microphones) {
    add(group, "circle", {cx: -y / width * 9, cy: -x / width * 9, r: 1.2});
  }
}

function isShown(record) {
  return record[Field.hasEstimate] === 1 && record[Field.azimuth] !== null;
}

function trailOf(now) {
  const since = now[Field.time] - TrailSeconds, trail = [];
  for (let i = records.length - 1; i >= 0 && records[i][Field.time] >= since; --i) {
    if (isShown(records[i]) && bit(records[i][Field.flags], VoiceBit)) trail.push(records[i]);
  }
  return trail;
}

function chooseScale(trail, now) {
  const ranges = trail.map((record) => record[Field.range]);
  if (isShown(now)) ranges.push(now[Field.range]);
  // The ninth in ten: a single wild guess does not zoom out.
  ranges.sort((a, b) => a - b);
  const farthest = ranges.length === 0 ? 0 : ranges[Math.floor((ranges.length - 1) * 0.9)];
  const scale = RadarScales.find((metres) => farthest <= metres * 0.97) || 10;
  if (scale === radarScale) return;
  radarScale = scale;
  drawRings();
}

function drawTrail(trail, now) {
  const group = byId("trail");
  while (group.childNodes.length < trail.length) add(group, "circle", {});
  while (group.childNodes.length > trail.length) group.lastChild.remove();
  trail.forEach((record, i) => {
    const at = place(record[Field.azimuth], record[Field.range]), dot = group.childNodes[i];
    const age = (now[Field.time] - record[Field.time]) / TrailSeconds;
    dot.setAttribute("cx", at.x.toFixed(1));
    dot.setAttribute("cy", at.y.toFixed(1));
    dot.setAttribute("r", (1.9 - 1.1 * age).toFixed(2));
    dot.setAttribute("opacity", (0.75 - 0.65 * age).toFixed(2));
  });
}

function drawTalker(now) {
  const talker = byId("talker"), isHere = isShown(now);
  const talks = bit(now[Field.flags], VoiceBit) === 1;
  talker.setAttribute("class", !isHere ? "hidden" : talks ? "" : "held");
  if (!isHere) {
    byId("radar").setAttribute("aria-label", "No talker yet");
    return;
  }
  const at = place(now[Field.azimuth], now[Field.range]);
  for (const id of ["dot", "halo"]) {
    byId(id).setAttribute("cx", at.x.toFixed(2));
    byId(id).setAttribute("cy", at.y.toFixed(2));
  }
  byId("dot").setAttribute("r", 4);
  const glow = 8 * Math.min(now[Field.quality] / BestQuality, 1);
  byId("halo").setAttribute("r", (4 + glow).toFixed(1));
  const ray = byId("ray");
  ray.setAttribute("x1", 0);
  ray.setAttribute("y1", 0);
  ray.setAttribute("x2", at.x.toFixed(2));
  ray.setAttribute("y2", at.y.toFixed(2));
  const who = talks ? "A talker" : "Nobody talks; the last talker was";
  byId("radar").setAttribute("aria-label", `${who} at ` +
    `${Math.round(now[Field.azimuth])} degrees, ${now[Field.range].toFixed(1)} metres`);
}

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

// --- History -------------------------------------------------------------------------------------

function drawHistory() {
  const canvas = byId("history"), ratio = window.devicePixelRatio || 1;
  const width = canvas.clientWidth, height = canvas.clientHeight;
  if (width === 0) return;
  if (canvas.width !== Math.round(width * ratio) || canvas.height !== Math.round(height * ratio)) {
    canvas.width = Math.round(width * ratio);
    canvas.height = Math.round(height * ratio);
  }
  const pen = canvas.getContext("2d");
  pen.setTransform(ratio, 0, 0, ratio, 0, 0);
  pen.clearRect(0, 0, width, height);
  pen.font = "11px system-ui, sans-serif";
  const style = getComputedStyle(document.documentElement);
  const colour = (name) => style.getPropertyValue(name).trim();
  const span = hello ? hello.historyFrames / hello.framesPerSecond : 180;
  const now = records.length ? records[records.length - 1][Field.time] : 0;
  const left = 40, right = width - 6;
  const x = (time) => right - (now - time) / span * (right - left);
  const upper = {top: 14, bottom: Math.round(height * 0.62)};
  const lower = {top: Math.round(height * 0.71), bottom: height - 18};
  const yAzimuth = (a) => upper.top + (90 - a) / 180 * (upper.bottom - upper.top);
  const yQuality = (q) => lower.bottom - Math.min(q / BestQuality, 1) * (lower.bottom - lower.top);
  const grid = {pen, colour, left, right, x, now, span, upper, lower, yAzimuth, yQuality};
  drawGrid(grid);
  drawCurves(grid);
  drawMarks(grid);
}

function drawGrid({pen, colour, left, right, x, now, span, upper, lower, yAzimuth, yQuality}) {
  pen.fillStyle = colour("--faint");
  pen.strokeStyle = colour("--line");
  pen.lineWidth = 1;
  const across = (y, label) => {
    pen.beginPath();
    pen.moveTo(left, Math.round(y) + 0.5);
    pen.lineTo(right, Math.round(y) + 0.5);
    pen.stroke();
    pen.textAlign = "right";
    pen.fillText(label, left - 5, y + 4);
  };
  for (const a of [-90, -45, 0, 45, 90]) across(yAzimuth(a), String(a).replace("-", "−") + "°");
  for (const q of [0, 0.5, 1, 1.5]) across(yQuality(q), q.toFixed(1));
  pen.textAlign = "left";
  pen.fillText("azimuth", left + 2, upper.top - 3);
  pen.fillText("quality", left + 2, lower.top - 4);
  for (let back = 0; back <= span + 0.5; back += 60) {
    pen.textAlign = back === 0 ? "right" : "center";
    const label = back === 0 ? "now" : `−${Math.round(back / 60)} min`;
    const at = x(now - back);
    if (at >= left - 1) pen.fillText(label, Math.max(at, left + 14), lower.bottom + 14);
  }
}

// Frames with voice in colour, all others faint.
function drawCurves({pen, colour, left, x, yAzimuth, yQuality}) {
  const voice = colour("--blue"), other = colour("--line"), line = colour("--purple");
  for (const record of records) {
    const at = x(record[Field.time]);
    if (at < left || !isShown(record)) continue;
    const talks = bit(record[Field.flags], VoiceBit);
    pen.fillStyle = talks ? voice : other;
    pen.fillRect(at - 1, yAzimuth(record[Field.azimuth]) - 1, talks ? 2.5 : 1.5, talks ? 2.5 : 1.5);
  }
  pen.strokeStyle = line;
  pen.lineWidth = 1.2;
  pen.beginPath();
  let last = null;
  for (const record of records) {
    const at = x(record[Field.time]);
    if (at < left || record[Field.quality] === null) continue;
    // Where sound was lost the curve is, too.
    const isNext = last !== null && record[Field.time] - last < 0.2;
    pen[isNext ? "lineTo" : "moveTo"](at, yQuality(record[Field.quality]));
    last = record[Field.time];
  }
  pen.stroke();
}

function timeOf(frame) {
  for (let i = records.length - 1; i >= 0; --i) {
    if (records[i][Field.frame] <= frame) return records[i][Field.time];
  }
  return null;
}

function drawMarks({pen, colour, left, x, upper, lower}) {
  pen.strokeStyle = pen.fillStyle = colour("--orange");
  pen.textAlign = "left";
  pen.lineWidth = 1.5;
  for (const mark of marks) {
    const time = timeOf(mark.frame);
    if (time === null || x(time) < left) continue;
    pen.beginPath();
    pen.moveTo(x(time), upper.top);
    pen.lineTo(x(time), lower.bottom);
    pen.stroke();
    const farthest = pen.canvas.clientWidth - pen.measureText(mark.label).width - 4;
    pen.fillText(mark.label, Math.min(x(time) + 4, farthest), upper.top + 10);
  }
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
  if (status && status.recordingStuck) {
    alarm += " The recording does not grow any more: is the disk full?";
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
  if (isDrawn || !hello || records.length === 0 || isPaused) return;
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
  records = records.concat(more);
  const most = hello ? hello.historyFrames : 4219;
  if (records.length > most) records = records.slice(records.length - most);
  lastFrameAt = performance.now();
  isDrawn = false;
}

function begin(about) {
  hello = about;
  records = [];
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

// --- Controls ------------------------------------------------------------------------------------

function pause() {
  isPaused = !isPaused;
  byId("pause").setAttribute("aria-pressed", String(isPaused));
  text("pause", isPaused ? "Go on" : "Pause");
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
  document.addEventListener("keydown", onKey);
  new ResizeObserver(() => { isDrawn = false; }).observe(byId("history"));
  drawRings();
  connect();
  draw();
}

start();
