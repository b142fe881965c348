// One map of errors: cells over azimuth and one more coordinate.

import {fixed} from '../text.js';
import {colourOf, errorText, inkOn, isGross, Scales, shareOf, withUnit} from './scale.js';
import {html, svg} from './svg.js';

const Left = 60;
const Right = 16;
const Top = 6;
const Bottom = 38;
const MostHeight = 320; // CSS pixels of all cells
const LeastForText = 30; // CSS pixels a cell must be wide to hold its figure

const Names = {elevation: 'Elevation', range: 'Range'};
const Units = {azimuth: '°', elevation: '°', range: ' m'};

const digitsFor = (step) => (step === 0 || step >= 10 ? 0 : step >= 1 ? 1 : 2);

// A number without zeros that say nothing.
const short = (value, digits) => fixed(Number(value.toFixed(digits)), Number.isInteger(Number(value.toFixed(digits))) ? 0 : digits);

class Axis {
  constructor({low, high, cells, grid}, unit) {
    Object.assign(this, {low, high, cells, grid, unit});
    this.step = (high - low) / cells;
    this.digits = Math.max(1, digitsFor(this.step));
  }

  number(value) {
    return short(value, this.digits);
  }

  middle(cell) {
    return this.low + (cell + 0.5) * this.step;
  }

  // What a cell stands for.
  text(cell) {
    if (this.grid || this.step === 0) return this.number(this.middle(cell)) + this.unit;
    const from = this.low + cell * this.step;
    return `${this.number(from)} to ${this.number(from + this.step)}${this.unit}`;
  }

  // Where labels stand, as shares of the axis: in the middle of a grid's cells, else at edges.
  ticks(most) {
    const isMiddle = this.grid || this.step === 0;
    const count = isMiddle ? this.cells : this.cells + 1;
    const every = Math.max(1, Math.ceil(count / Math.max(2, most)));
    const marks = [];
    for (let i = 0; i < count; i += every) {
      marks.push(isMiddle
        ? {share: (i + 0.5) / this.cells, text: this.number(this.middle(i))}
        : {share: i / this.cells, text: this.number(this.low + i * this.step)});
    }
    return marks;
  }
}

export class HeatMap {
  // `sweep` is the array's figures; `kind` what stands upwards.
  constructor(map, kind, sweep, limit) {
    this.kind = kind;
    this.sweep = sweep;
    this.limit = limit;
    this.across = new Axis(map.across, Units.azimuth);
    this.up = new Axis(map.up, Units[kind]);
    this.cells = new Map(map.cells.map((cell) => [`${cell.across},${cell.up}`, cell]));
    this.at = null;
    this.drawing = svg('svg', {class: 'map', tabindex: 0, role: 'application'});
    this.output = html('output');
    this.output.setAttribute('aria-live', 'polite');
    this.title = html('h3');
    this.note = html('p', {className: 'note'});
    this.element = html('figure', {}, this.title, this.drawing, this.note, this.output);
    this.listen();
  }

  listen() {
    this.drawing.addEventListener('pointermove', (event) => this.pick(this.under(event)));
    this.drawing.addEventListener('pointerdown', (event) => this.pick(this.under(event)));
    this.drawing.addEventListener('pointerleave', (event) => {
      if (event.pointerType === 'mouse' && document.activeElement !== this.drawing) this.pick(null);
    });
    this.drawing.addEventListener('focus', () => {
      const middle = {across: this.across.cells >> 1, up: this.up.cells >> 1};
      if (!this.at && this.drawing.matches(':focus-visible')) this.pick(middle);
    });
    this.drawing.addEventListener('blur', () => this.pick(null));
    this.drawing.addEventListener('keydown', (event) => this.onKey(event));
  }

  under(event) {
    const box = this.drawing.getBoundingClientRect();
    const across = Math.floor((event.clientX - box.x - Left) / this.cellWidth);
    const up = this.up.cells - 1 - Math.floor((event.clientY - box.y - Top) / this.cellHeight);
    const isOn = across >= 0 && across < this.across.cells && up >= 0 && up < this.up.cells;
    return isOn ? {across, up} : null;
  }

  onKey(event) {
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    const {across, up} = this.at || {across: this.across.cells >> 1, up: this.up.cells >> 1};
    const moves = {
      ArrowLeft: [across - 1, up], ArrowRight: [across + 1, up],
      ArrowUp: [across, up + 1], ArrowDown: [across, up - 1],
      Home: [0, up], End: [this.across.cells - 1, up],
    };
    if (event.key === 'Escape') this.pick(null);
    if (!moves[event.key]) return;
    event.preventDefault();
    const within = (value, count) => Math.max(0, Math.min(count - 1, value));
    const [toAcross, toUp] = moves[event.key];
    this.pick({across: within(toAcross, this.across.cells), up: within(toUp, this.up.cells)});
  }

  pick(at) {
    if (at?.across === this.at?.across && at?.up === this.at?.up) return;
    this.at = at;
    this.showCell();
  }

  show(choice, width, mostHeight = MostHeight) {
    this.choice = choice;
    const {quantity} = choice;
    const name = Names[quantity] || 'Azimuth';
    this.title.textContent = `${name} error over azimuth and ${this.kind}`;
    this.drawing.setAttribute('aria-label',
      `${this.sweep.array}: ${this.title.textContent}. Arrow keys go from cell to cell.`);
    const isMeant = quantity !== 'elevation' || this.sweep.geometry.has_elevation;
    this.note.textContent = this.noteText();
    this.drawing.toggleAttribute('hidden', !isMeant);
    this.element.classList.toggle('meaningless', !isMeant);
    this.output.hidden = !isMeant;
    if (isMeant) this.draw(width, mostHeight);
    this.showCell();
  }

  // What the geometry says, before any sound is heard.
  noteText() {
    const {geometry} = this.sweep;
    const {quantity} = this.choice;
    if (quantity === 'elevation' && !geometry.has_elevation) {
      return 'No pairs of this array tell the elevation: what it would say means nothing.';
    }
    const alone = this.kind === 'elevation' && this.up.low === 0 && this.up.high === 0 &&
      !geometry.has_elevation
      ? ' No pairs tell the elevation; all talkers are level with the array.' : '';
    if (quantity === 'range') {
      const limit = geometry.range_told_to;
      const told = limit > 0
        ? `By the geometry a metre of range is a lag or more up to ${fixed(limit, 1)} m straight ahead.`
        : 'By the geometry a metre of range is less than a lag everywhere: no range is told.';
      return told + alone;
    }
    const step = quantity === 'azimuth' ? geometry.azimuth_step : geometry.elevation_step;
    return `The geometry tells ${errorText(step)}° apart (median of the places).${alone}`;
  }

  draw(width, mostHeight) {
    this.width = width;
    this.cellWidth = (width - Left - Right) / this.across.cells;
    const most = this.up.cells === 1 ? 56 : mostHeight / this.up.cells;
    this.cellHeight = Math.max(12, Math.min(34, most, this.cellWidth * 0.9 + 6));
    const bottom = Top + this.cellHeight * this.up.cells;
    const height = bottom + Bottom;
    for (const [name, value] of Object.entries({width, height, viewBox: `0 0 ${width} ${height}`})) {
      this.drawing.setAttribute(name, value);
    }
    this.drawing.replaceChildren(...this.grid(), ...this.axes(bottom), ...this.toldLine(bottom));
    this.frame = svg('rect', {class: 'chosen', width: this.cellWidth, height: this.cellHeight});
    this.drawing.append(this.frame);
  }

  place(across, up) {
    return {x: Left + across * this.cellWidth, y: Top + (this.up.cells - 1 - up) * this.cellHeight};
  }

  grid() {
    const marks = [];
    for (let up = 0; up < this.up.cells; up++) {
      for (let across = 0; across < this.across.cells; across++) {
        marks.push(...this.cellMarks(across, up));
      }
    }
    return marks;
  }

  // [count, median, 90th percentile, share of gross errors] of what is chosen.
  figures(cell) {
    return cell[this.choice.kind][this.choice.quantity];
  }

  cellMarks(across, up) {
    const {x, y} = this.place(across, up);
    const [w, h] = [this.cellWidth, this.cellHeight];
    const [cx, cy] = [x + w / 2, y + h / 2];
    const box = (name, rest) => svg('rect', {x, y, width: w, height: h, class: name, ...rest});
    const cell = this.cells.get(`${across},${up}`);
    if (!cell) return [box('empty'), svg('circle', {cx, cy, r: 1.5, class: 'dot'})];
    const [count, median, ninety, gross] = this.figures(cell);
    if (count === 0) return [box('silent'), svg('path', {d: `M${cx - 4} ${cy}h8`, class: 'dash'})];
    const value = this.choice.statistic === 'median' ? median : ninety;
    const text = w >= LeastForText && h >= 14 ? errorText(value) : '';
    if (isGross(this.choice.quantity, value, this.limit)) {
      const r = Math.min(w, h) / 2 - 3;
      const cross = `M${cx - r} ${cy - r}l${2 * r} ${2 * r}M${cx + r} ${cy - r}l${-2 * r} ${2 * r}`;
      return [box('cell gross'), svg('path', {d: cross, class: 'cross'})];
    }
    const share = shareOf(Scales[this.choice.quantity], value);
    const marks = [box('cell', {fill: colourOf(share)})];
    if (text) marks.push(svg('text', {x: cx, y: cy + 4, class: 'value middle', fill: inkOn(share)}, text));
    if (gross > 0) {
      const side = Math.min(9, h / 2);
      marks.push(svg('path', {d: `M${x + w} ${y}v${side}l${-side} ${-side}z`, class: 'corner'}));
    }
    return marks;
  }

  axes(bottom) {
    const right = this.width - Right;
    const marks = this.across.ticks((right - Left) / 48).map(({share, text}) =>
      svg('text', {x: Left + share * (right - Left), y: bottom + 15, class: 'tick middle'}, text));
    for (const {share, text} of this.up.ticks((bottom - Top) / 16)) {
      marks.push(svg('text', {x: Left - 6, y: bottom - share * (bottom - Top) + 4, class: 'tick end'}, text));
    }
    const middle = (Top + bottom) / 2;
    const upTitle = this.up.cells === 1 ? '' : `${Names[this.kind]}${this.kind === 'range' ? ', m' : ', °'}`;
    marks.push(
      svg('text', {x: (Left + right) / 2, y: bottom + 31, class: 'axis middle'}, 'Azimuth, °'),
      svg('text', {x: 11, y: middle, class: 'axis middle', transform: `rotate(-90 11 ${middle})`}, upTitle),
    );
    return marks;
  }

  // Up to where the geometry tells a range.
  toldLine(bottom) {
    const {low, high} = this.up;
    const to = this.sweep.geometry.range_told_to;
    const isOn = this.choice.quantity === 'range' && this.kind === 'range' && to > low && to < high;
    if (!isOn) return [];
    const y = bottom - ((to - low) / (high - low)) * (bottom - Top);
    return ['told-back', 'told'].map((name) =>
      svg('path', {d: `M${Left} ${y}H${this.width - Right}`, class: name}));
  }

  showCell() {
    if (this.frame) {
      this.frame.toggleAttribute('hidden', !this.at);
      if (this.at) {
        const {x, y} = this.place(this.at.across, this.at.up);
        this.frame.setAttribute('x', x);
        this.frame.setAttribute('y', y);
      }
    }
    this.output.textContent = this.at ? this.cellText() : 'Point at a cell for its figures.';
    this.output.classList.toggle('quiet', !this.at);
  }

  cellText() {
    const {across, up} = this.at;
    const where = `azimuth ${this.across.text(across)}, ${this.kind} ${this.up.text(up)}: `;
    const cell = this.cells.get(`${across},${up}`);
    if (!cell) return `${where}no talkers`;
    const talkers = `${cell.places} ${cell.places === 1 ? 'talker' : 'talkers'}`;
    const {quantity} = this.choice;
    const [count, median, ninety, gross] = this.figures(cell);
    if (count === 0) return `${where}no estimate, ${talkers}`;
    const parts = [`median ${withUnit(quantity, median)}`, `90 % ${withUnit(quantity, ninety)}`];
    if (quantity !== 'range') parts.push(`over ${this.limit}° ${fixed(100 * gross, 1)} %`);
    parts.push(`${count} estimates`, talkers);
    const told = cell.told[quantity];
    if (quantity === 'range') {
      parts.push(told === null ? 'no lag tells the range' : `${errorText(told)} m a lag`);
    } else if (told !== null) {
      parts.push(`geometry ${errorText(told)}°`);
    }
    return where + parts.join(', ');
  }
}
