// The page of a sweep: for each array its microphones, maps of where it errs, and its figures.

import {onThemeChange, startTheme, toggleTheme} from '../theme.js';
import {HeatMap} from './heatMap.js';
import {drawLegend} from './legend.js';
import {html} from './svg.js';
import {figureTable, figureText, Kinds, overviewTable} from './tables.js';

const PaperWidth = 680; // CSS pixels: what A4 and letter have between their margins
const PaperMapHeight = 220; // so that an array is a page
const MapGap = 24;
const LeastForTwo = 800; // CSS pixels, from which on the maps stand side by side

const byId = (id) => document.getElementById(id);
const data = JSON.parse(byId('sweep').textContent);
const chosen = (name) => document.querySelector(`input[name=${name}]:checked`).value;

class ArrayPart {
  constructor(sweep, maps, views) {
    this.sweep = sweep;
    this.maps = ['elevation', 'range'].map(
      (kind) => new HeatMap(maps[kind], kind, sweep, data.gross_degrees));
    this.table = html('div', {className: 'table', tabIndex: 0});
    this.table.setAttribute('role', 'region');
    this.table.setAttribute('aria-label', `Figures of ${sweep.array}`);
    const pictures = html('div', {className: 'views'});
    pictures.append(views.content.cloneNode(true));
    pictures.querySelectorAll('svg').forEach((view, k) => view.setAttribute('aria-label',
      `Microphones of ${sweep.array} from ${k === 0 ? 'the front' : 'above'}`));
    const lines = ['Solid lines: azimuth pairs'];
    if (pictures.querySelector('.elevation')) lines.push('dashed: elevation pairs');
    if (pictures.querySelector('.loudspeaker')) lines.push('ring: loudspeaker');
    pictures.append(html('p', {className: 'note', textContent: lines.join(' · ')}));
    this.element = html('section', {className: 'array'},
      html('h2', {textContent: sweep.array}),
      html('div', {className: 'maps'}, ...this.maps.map((map) => map.element)),
      html('div', {className: 'beside'}, pictures, html('div', {className: 'figures'},
        this.table, html('p', {textContent: figureText(sweep)}))));
  }

  show(choice, width, mapHeight) {
    for (const map of this.maps) map.show(choice, width, mapHeight);
    this.table.replaceChildren(figureTable(this.sweep, choice.kind));
  }
}

class Page {
  constructor() {
    const views = document.querySelectorAll('template.views');
    this.parts = data.sweeps.map((sweep, k) => new ArrayPart(sweep, data.maps[k], views[k]));
    byId('arrays').append(...this.parts.map((part) => part.element));
    byId('kind').append(...Kinds.map(([value, textContent]) => html('option', {value, textContent})));
    const [first] = data.sweeps;
    byId('about').textContent = [first?.sound, `voxloc ${data.version}`].filter(Boolean).join(' · ');
    byId('command').textContent = data.command;
    const names = data.sweeps.map(({array}) => array).join(', ');
    document.title = `${names} – voxloc sweep`;
    byId('overview').hidden = data.sweeps.length < 2;
    byId('bar').addEventListener('change', () => this.show());
    document.addEventListener('keydown', (event) => this.onKey(event));
  }

  choice() {
    return {quantity: chosen('quantity'), statistic: chosen('statistic'), kind: byId('kind').value};
  }

  onKey(event) {
    if (event.ctrlKey || event.metaKey || event.altKey || event.target.tagName === 'SELECT') return;
    const picks = {a: 'azimuth', e: 'elevation', r: 'range', m: 'median', 9: 'p90'};
    const key = event.key.toLowerCase();
    if (key === 'd') toggleTheme();
    if (!picks[key]) return;
    document.querySelector(`input[value=${picks[key]}]`).checked = true;
    this.show();
  }

  show(paperWidth = 0) {
    const choice = this.choice();
    const all = paperWidth || byId('arrays').clientWidth;
    const width = !paperWidth && all >= LeastForTwo ? Math.floor((all - MapGap) / 2) : all;
    drawLegend(byId('legend'), choice.quantity, data.gross_degrees);
    for (const part of this.parts) part.show(choice, width, paperWidth ? PaperMapHeight : undefined);
    const place = byId('overview').querySelector('.table');
    place.replaceChildren(overviewTable(data.sweeps, choice.kind));
  }
}

startTheme();
const page = new Page();
page.show();
onThemeChange(() => page.show());
addEventListener('resize', () => page.show());
addEventListener('beforeprint', () => page.show(PaperWidth));
addEventListener('afterprint', () => page.show());
// For the console.
window.voxlocSweep = {page, data};
