// The run that the page holds: columns, one value a frame.

function json(id) {
  return JSON.parse(document.getElementById(id).textContent);
}

export function bytesOf(element) {
  const text = element.textContent;
  if (Uint8Array.fromBase64) return Uint8Array.fromBase64(text);
  const binary = atob(text);
  const bytes = new Uint8Array(binary.length);
  for (let i = 0; i < bytes.length; i++) bytes[i] = binary.charCodeAt(i);
  return bytes;
}

// Columns of a block are little-endian, as every machine with a browser is.
function takeBlock(run, element, at) {
  const bytes = bytesOf(element);
  const count = Number(element.dataset.count);
  let place = 0;
  const floats = (column) => {
    column.set(new Float32Array(bytes.buffer, bytes.byteOffset + place, count), at);
    place += 4 * count;
  };
  [run.azimuth, run.elevation, run.range, run.quality, run.ultrasound].forEach(floats);
  run.level.forEach(floats);
  const {other} = run;
  if (other) [other.azimuth, other.elevation, other.range, other.quality].forEach(floats);
  run.marks.set(bytes.subarray(place, place + count), at);
  if (other) other.marks.set(bytes.subarray(place + count, place + 2 * count), at);
  const first = Number(element.dataset.first);
  const sample = Number(element.dataset.sample);
  for (let i = 0; i < count; i++) {
    run.frame[at + i] = first + i;
    run.time[at + i] = (sample + i * run.frameSamples) / run.rate;
  }
  element.remove();
  return at + count;
}

// A position that rests on no sound is the corner of the grid and says nothing.
function dropGuesses(columns, estimate) {
  for (let i = 0; i < columns.marks.length; i++) {
    if (columns.marks[i] & estimate) continue;
    columns.azimuth[i] = columns.elevation[i] = columns.range[i] = NaN;
  }
}

export function readRun() {
  const head = json('run-head');
  const end = json('run-end');
  const blocks = [...document.querySelectorAll('script.frames')];
  const count = blocks.reduce((sum, block) => sum + Number(block.dataset.count), 0);
  const column = () => new Float32Array(count);
  const columns = () => ({
    azimuth: column(),
    elevation: column(),
    range: column(),
    quality: column(),
    marks: new Uint8Array(count),
  });
  const run = {
    ...columns(),
    count,
    header: head.header,
    otherHeader: head.other,
    rate: head.rate,
    frameSamples: head.frame_samples,
    frameSeconds: head.frame_samples / head.rate,
    flags: head.flags,
    estimate: 1 << head.flags.length,
    voice: 1 << head.flags.indexOf('voice'),
    frame: new Float64Array(count),
    time: new Float64Array(count),
    ultrasound: column(),
    level: Array.from({length: head.channels}, column),
    other: head.other ? columns() : null,
    turns: end.turns,
    frames: end.frames,
    voiceFrames: end.voice_frames,
    comparison: end.comparison,
    audioStart: end.audio_start,
  };
  blocks.reduce((at, block) => takeBlock(run, block, at), 0);
  dropGuesses(run, run.estimate);
  if (run.other) dropGuesses(run.other, run.estimate);
  run.start = count ? run.time[0] : 0;
  run.end = count ? run.time[count - 1] + run.frameSeconds : 1;
  const {clock} = run.header.options || {};
  run.clock = clock ? Date.parse(clock) : null;
  return run;
}

// The first index whose value is not below `value`.
export function lowerBound(column, value) {
  let low = 0;
  let high = column.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (column[middle] < value) low = middle + 1;
    else high = middle;
  }
  return low;
}

// The frame that sounds at a time, as an index.
export function indexAt(run, time) {
  const index = lowerBound(run.time, time + 1e-9) - 1;
  return Math.max(0, Math.min(run.count - 1, index));
}

export function indexOfFrame(run, frame) {
  return Math.min(run.count - 1, lowerBound(run.frame, frame));
}
