// Cividis, which reads the same to colour-blind people: dark blue over grey to yellow.

const Anchors = [
  [0, 34, 78],
  [18, 53, 112],
  [59, 73, 108],
  [87, 93, 109],
  [112, 113, 115],
  [138, 134, 120],
  [165, 156, 116],
  [195, 179, 105],
  [225, 204, 85],
  [254, 232, 56],
];

// `share` from 0 to 1.
export function cividis(share) {
  const place = Math.max(0, Math.min(1, share)) * (Anchors.length - 1);
  const i = Math.min(Anchors.length - 2, Math.floor(place));
  return Anchors[i].map((from, k) => Math.round(from + (Anchors[i + 1][k] - from) * (place - i)));
}

// Times on the page's ground: without the end of the colours that the ground swallows.
export function timeText(share, isDark) {
  return `rgb(${cividis(isDark ? 0.3 + 0.7 * share : 0.9 * share).join(' ')})`;
}

// As pixels of an image, little-endian.
export function cividisWords(count) {
  return Uint32Array.from({length: count}, (_, i) => {
    const [red, green, blue] = cividis(i / (count - 1));
    return ((255 << 24) | (blue << 16) | (green << 8) | red) >>> 0;
  });
}

function fill(canvas, textAt) {
  const context = canvas.getContext('2d');
  for (let i = 0; i < canvas.width; i++) {
    context.fillStyle = textAt(i / (canvas.width - 1));
    context.fillRect(i, 0, 1, 1);
  }
}

export function drawTimeScale(canvas, isDark) {
  fill(canvas, (share) => timeText(share, isDark));
}

export function drawScale(canvas) {
  fill(canvas, (share) => `rgb(${cividis(share).join(' ')})`);
}
