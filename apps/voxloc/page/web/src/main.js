// The page of a run: one view (from when to when) and one cursor (a frame) for all plots.

import {makeCharts, showFrame} from './charts.js';
import {indexAt, readRun} from './data.js';
import {followKeys, followPointers, panOrSelect} from './gestures.js';
import {listDifferences, listTurns, placeTurns} from './lists.js';
import {Room} from './room.js';
import {Sound} from './sound.js';
import {clockText, FlagTitles} from './text.js';
import {onThemeChange, startTheme, toggleTheme} from './theme.js';

const PaperWidth = 680; // CSS pixels: what A4 and letter have between their margins

const byId = (id) => document.getElementById(id);

class Page {
  constructor(run) {
    this.run = run;
    this.view = {min: run.start, max: run.end};
    this.index = null;
    this.pending = null;
    const actions = this.actions();
    this.charts = makeCharts(byId('plots'), run, {
      bind: {
        mousedown: panOrSelect(actions),
        dblclick: () => () => this.setView(run.start, run.end),
        mouseleave: () => () => null,
      },
      hooks: {
        setCursor: [(u) => this.onCursor(u)],
        setSelect: [(u) => this.onSelect(u)],
      },
    });
    this.room = new Room(byId('room'), run, (index) => this.setFrame(index));
    this.sound = new Sound(run, byId('play'), (time) => this.onSound(time));
    this.charts.forEach(({plot}) => {
      followPointers(plot, actions);
      plot.over.addEventListener('click', () => this.sound.seek(run.time[this.index]));
    });
    followKeys(actions);
    this.bindTools(actions);
    this.fillTexts();
    this.room.resize();
    this.setView(run.start, run.end);
  }

  actions() {
    return {
      width: () => this.view.max - this.view.min,
      pan: (seconds) => this.setView(this.view.min + seconds, this.view.max + seconds),
      zoom: (factor, at) => this.zoom(factor, at),
      all: () => this.setView(this.run.start, this.run.end),
      step: (frames) => this.step(frames),
      play: () => this.sound.toggle(),
      theme: toggleTheme,
      pointAt: (plot, event) => {
        const left = event.clientX - plot.over.getBoundingClientRect().left;
        this.setFrame(indexAt(this.run, plot.posToVal(left, 'x')));
      },
    };
  }

  bindTools(act) {
    byId('back').addEventListener('click', () => act.pan(-act.width() / 4));
    byId('forth').addEventListener('click', () => act.pan(act.width() / 4));
    byId('closer').addEventListener('click', () => act.zoom(0.5));
    byId('wider').addEventListener('click', () => act.zoom(2));
    byId('all').addEventListener('click', act.all);
  }

  fillTexts() {
    const {header, otherHeader} = this.run;
    const input = header.input || {};
    const name = input.name || 'run';
    const file = name.split('/').pop() || name;
    document.title = `${file} – voxloc`;
    byId('title').textContent = file;
    byId('title').title = name;
    const parts = [
      input.kind,
      header.array?.name && `array ${header.array.name}`,
      `${this.run.level.length} microphones`,
      `${clockText(this.run.frames * this.run.frameSeconds, 1)} from ${clockText(this.run.start, 1)}`,
      header.options?.clock && `began ${header.options.clock}`,
      `voxloc ${header.version}`,
    ];
    if (otherHeader) parts.push('over it, in vermilion, the run that it is compared with');
    byId('about').textContent = parts.filter(Boolean).join(' · ');
    const goTo = (from, to, index) => this.goTo(from, to, index);
    listTurns(byId('turns'), this.run, goTo);
    listDifferences(byId('differences'), this.run, goTo);
  }

  goTo(from, to, index) {
    const margin = Math.max(0.5, (to - from) * 0.15);
    this.setView(from - margin, to + margin);
    this.setFrame(index);
    this.sound.seek(this.run.time[index]);
  }

  // The view stays within the run and is some frames wide at least.
  setView(min, max) {
    const {start, end, frameSeconds} = this.run;
    const width = Math.min(end - start, Math.max(max - min, 8 * frameSeconds));
    const from = Math.max(start, Math.min(end - width, (min + max - width) / 2));
    this.view = {min: from, max: from + width};
    this.drawSoon();
  }

  zoom(factor, at) {
    const {min, max} = this.view;
    const cursor = this.index === null ? NaN : this.run.time[this.index];
    const fixedAt = at ?? (cursor >= min && cursor <= max ? cursor : (min + max) / 2);
    const width = (max - min) * factor;
    const from = fixedAt - ((fixedAt - min) / (max - min)) * width;
    this.setView(from, from + width);
  }

  step(frames) {
    if (!this.run.count) return;
    const middle = indexAt(this.run, (this.view.min + this.view.max) / 2);
    const index = this.index === null ? middle : this.index + frames;
    this.setFrame(Math.max(0, Math.min(this.run.count - 1, index)));
    this.keepInView(0.1);
    this.sound.seek(this.run.time[this.index]);
  }

  keepInView(share) {
    const time = this.run.time[this.index];
    const {min, max} = this.view;
    if (time >= min && time + this.run.frameSeconds <= max) return;
    const from = time < min ? time - (max - min) * (1 - share) : time - (max - min) * share;
    this.setView(from, from + max - min);
  }

  onSound(time) {
    this.setFrame(indexAt(this.run, time));
    this.keepInView(0.02);
  }

  onCursor(plot) {
    if (this.isDrawing || !(plot.cursor.left >= 0) || !plot.cursor.event) return;
    this.setFrame(indexAt(this.run, plot.posToVal(plot.cursor.left, 'x')));
  }

  onSelect(plot) {
    const {left, width} = plot.select;
    if (width < 2) return;
    this.setView(plot.posToVal(left, 'x'), plot.posToVal(left + width, 'x'));
    plot.setSelect({left: 0, top: 0, width: 0, height: 0}, false);
  }

  setFrame(index) {
    if (!this.run.count) return;
    this.index = index;
    this.drawSoon();
  }

  // However often something moves, it is drawn once a picture of the screen.
  drawSoon() {
    this.pending ??= requestAnimationFrame(() => {
      this.pending = null;
      this.draw();
    });
  }

  draw() {
    this.isDrawing = true;
    const {min, max} = this.view;
    if (this.drawn?.min !== min || this.drawn?.max !== max) {
      this.drawn = this.view;
      for (const {plot} of this.charts) plot.batch(() => plot.setScale('x', {min, max}));
      this.room.setView(this.view);
      byId('span').textContent = `${clockText(min, 1)} – ${clockText(max, 1)}`;
    }
    if (this.index !== null) this.drawFrame();
    this.isDrawing = false;
  }

  drawFrame() {
    const {run, index} = this;
    for (const chart of this.charts) showFrame(chart, run, index);
    this.room.setFrame(index);
    const time = run.time[index];
    byId('time').textContent =
      run.clock === null
        ? clockText(time, 2)
        : new Date(run.clock + time * 1000).toISOString().replace('T', ' ').replace('Z', '');
    byId('frame').textContent = String(run.frame[index]);
    const names = run.flags.filter((name, k) => name !== 'position_valid' && run.marks[index] & (1 << k));
    byId('marks').textContent = names.map((name) => FlagTitles[name] || name).join(', ');
  }

  redraw() {
    for (const {plot} of this.charts) plot.redraw(true, true);
    this.room.draw();
  }

  resize(most = Infinity) {
    for (const {plot, place} of this.charts) {
      const width = Math.min(most, place.clientWidth);
      if (width > 0) plot.setSize({width, height: plot.height});
    }
    this.room.resize();
    this.drawn = null;
    this.drawSoon();
  }
}

startTheme();
const run = readRun();
placeTurns(run);
const page = new Page(run);
onThemeChange(() => page.redraw());
addEventListener('resize', () => page.resize());
addEventListener('beforeprint', () => page.resize(PaperWidth));
addEventListener('afterprint', () => page.resize());
// For the console.
window.voxlocPage = page;
