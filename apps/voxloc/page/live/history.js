// Azimuth and quality over the last minutes, on a canvas. Shares the names of live.js.
"use strict";

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
