// The plots over time. All share one view and one cursor, which main.js keeps.

import uPlot from 'uplot';
import {cividisWords, drawScale} from './palette.js';
import {dots, drawLane, drawLevels} from './marks.js';
import {clockText, fixed, FlagTitles} from './text.js';
import {color} from './theme.js';

const LaneColors = ['blue', 'sky', 'green', 'vermilion', 'orange', 'purple', 'grey', 'grey'];
const LaneHeight = 17;
const AxisHeight = 26;

function limitsOf(columns, least) {
  let low = Infinity;
  let high = -Infinity;
  for (const column of columns) {
    for (const value of column) {
      if (value < low) low = value;
      if (value > high && value < Infinity) high = value;
    }
  }
  if (low > high) [low, high] = least;
  return [low, high];
}

function padded([low, high], leastSpan) {
  const span = Math.max(leastSpan, (high - low) * 1.1);
  const middle = (low + high) / 2;
  return [middle - span / 2, middle + span / 2];
}

function panel(parent, {id, title, unit}) {
  const element = document.createElement('figure');
  element.id = id;
  element.className = 'plot';
  const caption = document.createElement('figcaption');
  const name = document.createElement('span');
  name.className = 'name';
  name.textContent = title;
  const small = document.createElement('span');
  small.className = 'unit';
  small.textContent = unit;
  const value = document.createElement('output');
  caption.append(name, ' ', small, value);
  const place = document.createElement('div');
  place.className = 'place';
  element.append(caption, place);
  parent.append(element);
  return {element, caption, place, value};
}

function timeTicks(_, ticks) {
  const step = ticks.length > 1 ? ticks[1] - ticks[0] : 1;
  return ticks.map((tick) => clockText(tick, step < 0.1 ? 2 : step < 1 ? 1 : 0));
}

const TimeSteps = [
  0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200,
  14400, 36000,
];

function axes(isNarrow, yAxis) {
  const font = '11px system-ui, sans-serif';
  const common = {stroke: () => color('soft'), font, ticks: {show: false}};
  return [
    {
      ...common,
      size: AxisHeight,
      gap: 4,
      space: 60,
      incrs: TimeSteps,
      values: timeTicks,
      grid: {stroke: () => color('grid'), width: 1},
    },
    {
      ...common,
      size: isNarrow ? 74 : 84,
      gap: 6,
      space: 26,
      grid: {stroke: () => color('grid'), width: 1},
      values: (_, ticks) => ticks.map((tick) => String(Number(tick.toFixed(3))).replace('-', '\u2212')),
      ...yAxis,
    },
  ];
}

function chart(parent, options) {
  const parts = panel(parent, options);
  const isNarrow = innerWidth < 700;
  const height = options.height(isNarrow) + AxisHeight;
  const plot = new uPlot(
    {
      width: Math.max(200, parts.place.clientWidth),
      height,
      padding: [4, 24, 0, 0],
      legend: {show: false},
      cursor: {
        y: false,
        points: {show: false},
        drag: {x: true, y: false, setScale: false, dist: 4},
        focus: {prox: -1},
        bind: options.bind,
      },
      scales: {
        x: {time: false, range: (_, low, high) => [low, high]},
        y: {range: () => options.limits},
      },
      axes: axes(isNarrow, options.yAxis),
      series: [{}, ...options.series],
      hooks: options.hooks,
    },
    options.data,
    parts.place,
  );
  const point = document.createElement('div');
  point.className = 'point';
  point.hidden = true;
  plot.over.append(point);
  return {...options, ...parts, plot, point};
}

// A column as uPlot takes it: null where there is nothing.
function withGaps(column) {
  return column.some(Number.isNaN) ? Array.from(column, (v) => (Number.isNaN(v) ? null : v)) : column;
}

function positionChart(parent, run, {name, digits, limits, ...options}) {
  const {other, voice} = run;
  const column = run[name];
  const series = [
    {fill: () => color('quiet'), paths: dots(run.marks, (marks) => !(marks & voice))},
    {fill: () => color('blue'), paths: dots(run.marks, (marks) => marks & voice)},
  ];
  const data = [run.time, column, column];
  if (other) {
    series.unshift({fill: () => color('vermilion'), paths: dots(other.marks, () => true)});
    data.splice(1, 0, other[name]);
  }
  return chart(parent, {
    ...options,
    id: name,
    limits: limits(limitsOf(other ? [column, other[name]] : [column], [0, 1])),
    series: series.map((one) => ({...one, points: {show: false}})),
    data,
    height: (isNarrow) => (isNarrow ? 110 : 124),
    valueAt: (i) => column[i],
    textAt: (i) => fixed(column[i], digits) + (other ? ` | ${fixed(other[name][i], digits)}` : ''),
  });
}

function qualityChart(parent, run, shared) {
  const {other} = run;
  const line = (name) => ({
    stroke: () => color(name),
    width: 1,
    points: {show: false},
    spanGaps: false,
  });
  const columns = other ? [other.quality, run.quality] : [run.quality];
  const [low, high] = limitsOf(columns, [0, 1]);
  return chart(parent, {
    ...shared,
    id: 'quality',
    title: 'Quality',
    unit: 'sum of the two peaks',
    limits: [Math.min(0, low), Math.max(1, high * 1.05)],
    series: other ? [line('vermilion'), line('blue')] : [line('blue')],
    data: [run.time, ...columns.map(withGaps)],
    height: () => 90,
    valueAt: (i) => run.quality[i],
    textAt: (i) => fixed(run.quality[i], 3) + (other ? ` | ${fixed(other.quality[i], 3)}` : ''),
  });
}

function lanesAxis(labels) {
  const count = labels.length;
  return {
    splits: () => labels.map((_, i) => count - i - 0.5),
    values: () => labels,
    grid: {show: false},
    space: 1,
  };
}

// Draws turns and flags; uPlot gives axes, view and cursor.
function drawFlags(u, run, names) {
  const ratio = uPlot.pxRatio;
  const lane = u.bbox.height / (names.length + 1);
  const gap = 1.5 * ratio;
  u.ctx.save();
  u.ctx.beginPath();
  u.ctx.rect(u.bbox.left, u.bbox.top, u.bbox.width, u.bbox.height);
  u.ctx.clip();
  drawTurns(u, run, lane - 2 * gap, gap);
  names.forEach((_, k) => {
    const top = u.bbox.top + (k + 1) * lane + gap;
    const height = lane - 2 * gap;
    const fill = color(LaneColors[k]);
    u.ctx.fillStyle = color('lane');
    u.ctx.fillRect(u.bbox.left, top, u.bbox.width, height);
    const half = run.other ? height / 2 : height;
    drawLane(u, run.frameSeconds, run.marks, 1 << k, {top, height: half, fill});
    if (run.other) {
      const lower = {top: top + half, height: half - ratio, fill};
      drawLane(u, run.frameSeconds, run.other.marks, 1 << k, lower);
    }
  });
  u.ctx.restore();
}

function drawTurns(u, run, height, gap) {
  const {ctx} = u;
  const top = u.bbox.top + gap;
  ctx.textBaseline = 'middle';
  ctx.textAlign = 'center';
  ctx.font = `${11 * uPlot.pxRatio}px system-ui, sans-serif`;
  run.turns.forEach((turn, k) => {
    const from = u.valToPos(turn.from, 'x', true);
    const to = u.valToPos(turn.to, 'x', true);
    if (to < u.bbox.left || from > u.bbox.left + u.bbox.width) return;
    ctx.fillStyle = color('turn');
    ctx.fillRect(from, top, Math.max(1, to - from - 1), height);
    const begin = Math.max(from, u.bbox.left);
    const end = Math.min(to, u.bbox.left + u.bbox.width);
    if (end - begin < 18 * uPlot.pxRatio) return;
    ctx.fillStyle = color('text');
    ctx.fillText(String(k + 1), (begin + end) / 2, top + height / 2);
  });
}

function flagsChart(parent, run, shared) {
  const names = [...run.flags.map((name) => FlagTitles[name] || name), 'estimate'];
  const labels = ['turns', ...names];
  return chart(parent, {
    ...shared,
    id: 'flags',
    title: 'Flags',
    unit: run.other ? 'above: this run, below: the other' : '',
    limits: [0, labels.length],
    series: [{paths: () => null, points: {show: false}}],
    data: [run.time, run.quality],
    yAxis: lanesAxis(labels),
    height: () => labels.length * LaneHeight,
    hooks: {...shared.hooks, draw: [(u) => drawFlags(u, run, names)]},
    textAt: (i) => names.filter((_, k) => run.marks[i] & (1 << k)).join(', ') || 'none',
  });
}

function levelsChart(parent, run, shared) {
  const [least, most] = limitsOf(
    run.level.map((level) => level.map((v) => (v === -Infinity ? NaN : v))),
    [-60, 0],
  );
  const high = Math.ceil(most / 5) * 5;
  const low = Math.min(high - 10, Math.max(high - 70, Math.floor(least / 5) * 5));
  const palette = cividisWords(128);
  const isSilent = run.level.some((level) => level.includes(-Infinity));
  const made = chart(parent, {
    ...shared,
    id: 'levels',
    title: 'Level of each microphone',
    unit: isSilent ? 'dB of full scale · blank: digital silence' : 'dB of full scale',
    limits: [0, run.level.length],
    series: [{paths: () => null, points: {show: false}}],
    data: [run.time, run.quality],
    yAxis: lanesAxis(run.level.map((_, c) => `mic ${c}`)),
    height: () => run.level.length * LaneHeight,
    hooks: {
      ...shared.hooks,
      draw: [(u) => drawLevels(u, run.frameSeconds, run.level, {low, high, palette})],
    },
    textAt: (i) => run.level.map((level) => fixed(level[i], 1)).join('  '),
  });
  made.element.append(levelScale(low, high));
  return made;
}

function levelScale(low, high) {
  const scale = document.createElement('div');
  scale.className = 'scale';
  const canvas = document.createElement('canvas');
  canvas.width = 64;
  canvas.height = 1;
  drawScale(canvas);
  scale.append(`${fixed(low, 0)} dB`, canvas, `${fixed(high, 0)} dB`);
  return scale;
}

export function makeCharts(parent, run, shared) {
  // Without pairs that tell it, the elevation is the corner of the grid.
  const hasElevation = run.header.array?.elevation_pairs?.length !== 0;
  const angle = {...shared, unit: '° · grey: no voice', digits: 1, limits: (found) => padded(found, 20)};
  return [
    positionChart(parent, run, {...angle, name: 'azimuth', title: 'Azimuth'}),
    ...(hasElevation
      ? [positionChart(parent, run, {...angle, name: 'elevation', title: 'Elevation'})]
      : []),
    positionChart(parent, run, {
      ...shared,
      name: 'range',
      title: 'Range',
      unit: 'm · grey: no voice',
      digits: 2,
      limits: ([, high]) => [0, Math.max(1, high * 1.05)],
    }),
    qualityChart(parent, run, shared),
    flagsChart(parent, run, shared),
    levelsChart(parent, run, shared),
  ];
}

// The cursor of one chart at a frame.
export function showFrame(made, run, index) {
  const {plot, point} = made;
  const time = run.time[index];
  const {min, max} = plot.scales.x;
  const isInView = time >= min && time <= max;
  plot.setCursor({left: isInView ? plot.valToPos(time, 'x') : -10, top: 0}, false);
  made.value.textContent = made.textAt(index);
  const value = made.valueAt ? made.valueAt(index) : NaN;
  const [low, high] = made.limits;
  point.hidden = !(isInView && value >= low && value <= high);
  if (point.hidden) return;
  point.style.left = `${plot.valToPos(time, 'x')}px`;
  point.style.top = `${plot.valToPos(value, 'y')}px`;
}
