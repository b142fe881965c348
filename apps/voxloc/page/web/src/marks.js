// What is drawn into the plots: dots, bars of flags, bands of levels. Each looks at every frame in
// view once, and draws at most once a pixel.

import uPlot from 'uplot';

const BothClips = 3; // uPlot's BAND_CLIP_FILL | BAND_CLIP_STROKE

// A path builder of dots for the frames whose marks say so; `wanted` tells by the marks.
export function dots(marks, wanted) {
  let taken = new Uint8Array(0);
  return (u, series, from, to) => {
    const path = new Path2D();
    const {min, max} = u.scales.y;
    const {left, top, width, height} = u.bbox;
    const x = u.data[0];
    const y = u.data[series];
    const dot = sizeOfDots(u, to - from);
    const cell = uPlot.pxRatio;
    const columns = Math.ceil(width / cell) + 1;
    const rows = Math.ceil(height / cell) + 1;
    if (taken.length < columns * rows) taken = new Uint8Array(columns * rows);
    else taken.fill(0);
    const perSecond = width / (u.scales.x.max - u.scales.x.min);
    const perUnit = height / (max - min);
    for (let i = from; i <= to; i++) {
      if (!wanted(marks[i]) || !(y[i] >= min && y[i] <= max)) continue;
      const px = (x[i] - u.scales.x.min) * perSecond;
      const py = (max - y[i]) * perUnit;
      if (px < 0 || px > width) continue;
      const place = Math.floor(py / cell) * columns + Math.floor(px / cell);
      if (taken[place]) continue;
      taken[place] = 1;
      path.rect(left + px - dot / 2, top + py - dot / 2, dot, dot);
    }
    return {stroke: null, fill: path, clip: null, flags: BothClips};
  };
}

function sizeOfDots(u, frames) {
  const room = u.bbox.width / uPlot.pxRatio / Math.max(1, frames);
  return uPlot.pxRatio * (room > 8 ? 5 : room > 1 ? 3 : 2);
}

// Calls back for each frame in view with the first and the last pixel column that it covers.
function eachFrame(u, frameSeconds, callback) {
  const width = Math.ceil(u.bbox.width);
  const x = u.data[0];
  const perSecond = u.bbox.width / (u.scales.x.max - u.scales.x.min);
  const step = frameSeconds * perSecond;
  const [from, to] = u.series[0].idxs;
  for (let i = Math.max(0, from - 1); i <= to; i++) {
    const begin = (x[i] - u.scales.x.min) * perSecond;
    const first = Math.max(0, Math.floor(begin));
    const last = Math.min(width - 1, Math.max(first, Math.ceil(begin + step) - 1));
    if (begin + step > 0) callback(i, first, last);
  }
}

// Share of the frames with a bit, for each pixel column in view.
function shares(u, frameSeconds, marks, bit) {
  const width = Math.ceil(u.bbox.width);
  const hits = new Uint32Array(width);
  const all = new Uint32Array(width);
  eachFrame(u, frameSeconds, (i, first, last) => {
    const hit = marks[i] & bit ? 1 : 0;
    for (let column = first; column <= last; column++) {
      all[column]++;
      hits[column] += hit;
    }
  });
  return {hits, all, width};
}

const Shades = 4;

// A lane: the darker, the more frames of the pixel have the flag; one is seen at any zoom.
export function drawLane(u, frameSeconds, marks, bit, {top, height, fill}) {
  const {ctx} = u;
  const {hits, all, width} = shares(u, frameSeconds, marks, bit);
  const shadeAt = (column) =>
    hits[column] ? Math.max(1, Math.round((Shades * hits[column]) / all[column])) : 0;
  ctx.fillStyle = fill;
  for (let begin = 0; begin < width; ) {
    const shade = shadeAt(begin);
    let end = begin + 1;
    while (end < width && shadeAt(end) === shade) end++;
    if (shade) {
      ctx.globalAlpha = 0.25 + (0.75 * shade) / Shades;
      ctx.fillRect(u.bbox.left + begin, top, end - begin, height);
    }
    begin = end;
  }
  ctx.globalAlpha = 1;
}

// The bands of all microphones: the loudest frame of each pixel column by its colour.
export function drawLevels(u, frameSeconds, levels, {low, high, palette}) {
  const width = Math.ceil(u.bbox.width);
  const loudest = levels.map(() => new Float32Array(width).fill(-Infinity));
  eachFrame(u, frameSeconds, (i, first, last) => {
    for (let row = 0; row < levels.length; row++) {
      const level = levels[row][i];
      const band = loudest[row];
      for (let column = first; column <= last; column++) {
        if (level > band[column]) band[column] = level;
      }
    }
  });
  const picture = new ImageData(width, levels.length);
  const words = new Uint32Array(picture.data.buffer);
  const perDecibel = (palette.length - 1) / (high - low);
  loudest.forEach((band, row) => {
    for (let column = 0; column < width; column++) {
      if (band[column] === -Infinity) continue;
      const index = Math.round((band[column] - low) * perDecibel);
      words[row * width + column] = palette[Math.max(0, Math.min(palette.length - 1, index))];
    }
  });
  const canvas = document.createElement('canvas');
  canvas.width = width;
  canvas.height = levels.length;
  canvas.getContext('2d').putImageData(picture, 0, 0);
  u.ctx.imageSmoothingEnabled = false;
  const {left, top, height} = u.bbox;
  u.ctx.drawImage(canvas, left, top, width, height);
}
