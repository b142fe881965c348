// The room from above: x, ahead of the array, goes up; y goes to the left.

import {drawTimeScale, timeText} from './palette.js';
import {indexAt} from './data.js';
import {clockText} from './text.js';
import {color, isDark} from './theme.js';

const Margin = 16;
const Reach = 10; // CSS pixels around the pointer

// All ranges but the farthest two per cent fit.
function extentOf(run) {
  const ranges = run.range.filter((range, i) => range > 0 && run.marks[i] & run.voice).sort();
  const far = ranges.length ? ranges[Math.floor(0.98 * (ranges.length - 1))] : 4;
  return Math.max(1, Math.ceil(far * 1.1 * 2) / 2);
}

export class Room {
  constructor(section, run, onHover) {
    this.run = run;
    this.canvas = section.querySelector('canvas');
    this.canvas.className = 'room';
    this.showsAll = section.querySelector('#room-all');
    this.extent = extentOf(run);
    this.view = {min: run.start, max: run.end};
    this.index = null;
    this.scale = section.querySelector('#room-scale');
    this.from = section.querySelector('#room-from');
    this.to = section.querySelector('#room-to');
    this.showsAll.addEventListener('change', () => this.draw());
    this.canvas.addEventListener('pointermove', (event) => {
      const index = this.nearest(event.offsetX, event.offsetY);
      if (index !== null) onHover(index);
    });
  }

  // CSS pixels of a place.
  place(azimuth, range) {
    const angle = (azimuth * Math.PI) / 180;
    return [
      this.centre - range * Math.sin(angle) * this.perMetre,
      this.ground - range * Math.cos(angle) * this.perMetre,
    ];
  }

  isShown(i) {
    const wanted = this.showsAll.checked ? this.run.estimate : this.run.voice;
    return this.run.marks[i] & wanted && this.run.range[i] >= 0;
  }

  span() {
    return [indexAt(this.run, this.view.min), indexAt(this.run, this.view.max)];
  }

  nearest(x, y) {
    if (!this.run.count) return null;
    let best = null;
    let distance = Reach;
    const [from, to] = this.span();
    for (let i = from; i <= to; i++) {
      if (!this.isShown(i)) continue;
      const [px, py] = this.place(this.run.azimuth[i], this.run.range[i]);
      const found = Math.hypot(px - x, py - y);
      if (found < distance) [best, distance] = [i, found];
    }
    return best;
  }

  resize() {
    const width = this.canvas.clientWidth;
    if (width <= 2 * Margin) return; // nothing is laid out
    const height = Math.round((width - 2 * Margin) / 2 + 2 * Margin + 8);
    this.ratio = devicePixelRatio || 1;
    this.canvas.width = Math.round(width * this.ratio);
    this.canvas.height = Math.round(height * this.ratio);
    this.canvas.style.height = `${height}px`;
    this.centre = width / 2;
    this.ground = height - Margin - 8;
    this.perMetre = (width / 2 - Margin) / this.extent;
    this.still = null;
    this.draw();
  }

  setView(view) {
    this.view = view;
    this.draw();
  }

  setFrame(index) {
    this.index = index;
    this.drawTalker();
  }

  draw() {
    const context = this.canvas.getContext('2d');
    context.setTransform(this.ratio, 0, 0, this.ratio, 0, 0);
    context.clearRect(0, 0, this.canvas.width, this.canvas.height);
    drawTimeScale(this.scale, isDark());
    this.drawGround(context);
    if (this.run.other) this.drawOther(context);
    this.drawTrack(context);
    this.drawTurns(context);
    // The talker goes over this picture again and again.
    this.still = document.createElement('canvas');
    this.still.width = this.canvas.width;
    this.still.height = this.canvas.height;
    this.still.getContext('2d').drawImage(this.canvas, 0, 0);
    this.from.textContent = clockText(this.view.min, 0);
    this.to.textContent = clockText(this.view.max, 0);
    this.drawTalker();
  }

  drawGround(context) {
    const step = [0.5, 1, 2, 5].find((metres) => this.extent / metres <= 5) || 10;
    context.strokeStyle = color('grid');
    context.fillStyle = color('soft');
    context.font = '11px system-ui, sans-serif';
    context.textAlign = 'center';
    context.textBaseline = 'middle';
    context.lineWidth = 1;
    for (let metres = step; metres <= this.extent + 1e-6; metres += step) {
      context.beginPath();
      context.arc(this.centre, this.ground, metres * this.perMetre, Math.PI, 2 * Math.PI);
      context.stroke();
      if (metres > this.extent) continue;
      context.fillText(String(metres), this.centre + metres * this.perMetre, this.ground + 11);
      context.fillText(String(metres), this.centre - metres * this.perMetre, this.ground + 11);
    }
    for (let angle = -90; angle <= 90; angle += 30) {
      context.beginPath();
      context.moveTo(this.centre, this.ground);
      context.lineTo(...this.place(angle, this.extent));
      context.stroke();
      if (Math.abs(angle) === 90) continue;
      const [x, y] = this.place(angle, this.extent + 9 / this.perMetre);
      context.fillText(`${angle < 0 ? '\u2212' : ''}${Math.abs(angle)}°`, x, y);
    }
    context.fillStyle = color('text');
    context.fillRect(this.centre - 12, this.ground - 2, 24, 5);
  }

  drawTrack(context) {
    const [from, to] = this.span();
    const seconds = this.view.max - this.view.min;
    const size = to - from > 5000 ? 2 : 3;
    const dark = isDark();
    let last = -1;
    for (let i = from; i <= to; i++) {
      if (!this.isShown(i)) continue;
      const shade = Math.floor((63 * (this.run.time[i] - this.view.min)) / seconds);
      if (shade !== last) context.fillStyle = timeText(shade / 63, dark);
      last = shade;
      const [x, y] = this.place(this.run.azimuth[i], this.run.range[i]);
      context.fillRect(x - size / 2, y - size / 2, size, size);
    }
  }

  drawOther(context) {
    const {other, voice} = this.run;
    const [from, to] = this.span();
    context.fillStyle = color('vermilion');
    for (let i = from; i <= to; i++) {
      if (!(other.marks[i] & voice) || !(other.range[i] >= 0)) continue;
      const [x, y] = this.place(other.azimuth[i], other.range[i]);
      context.fillRect(x - 2, y - 2, 4, 4);
    }
  }

  // The numbers of turns at their places; those of one place stand together.
  turnLabels() {
    const labels = [];
    this.run.turns.forEach((turn, k) => {
      if (turn.to < this.view.min || turn.from > this.view.max) return;
      if (turn.range === null || turn.azimuth === null) return;
      const [x, y] = this.place(turn.azimuth, turn.range);
      const near = labels.find((label) => Math.hypot(label.x - x, label.y - y) < 2 * Reach);
      if (near) near.turns.push(k + 1);
      else labels.push({x, y, turns: [k + 1]});
    });
    return labels;
  }

  drawTurns(context) {
    context.textAlign = 'center';
    context.textBaseline = 'bottom';
    context.font = '600 11px system-ui, sans-serif';
    for (const {x, y, turns} of this.turnLabels()) {
      const text = turns.slice(0, 3).join(', ') + (turns.length > 3 ? ' …' : '');
      context.lineWidth = 3;
      context.strokeStyle = color('back');
      context.strokeText(text, x, y - 7);
      context.fillStyle = color('text');
      context.fillText(text, x, y - 7);
    }
  }

  drawTalker() {
    if (!this.still) return;
    const context = this.canvas.getContext('2d');
    context.setTransform(1, 0, 0, 1, 0, 0);
    context.clearRect(0, 0, this.canvas.width, this.canvas.height);
    context.drawImage(this.still, 0, 0);
    const {run, index} = this;
    if (index === null || !(run.range[index] >= 0) || Number.isNaN(run.azimuth[index])) return;
    context.setTransform(this.ratio, 0, 0, this.ratio, 0, 0);
    const [x, y] = this.place(run.azimuth[index], run.range[index]);
    for (const [stroke, width] of [
      [color('back'), 5],
      [color('mark'), 2.5],
    ]) {
      context.strokeStyle = stroke;
      context.lineWidth = width;
      context.beginPath();
      context.arc(x, y, 7, 0, 2 * Math.PI);
      context.stroke();
    }
  }
}
