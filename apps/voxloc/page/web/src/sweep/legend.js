// What the colours of the maps mean.

import {colourOf, Scales, shareOf} from './scale.js';
import {svg} from './svg.js';

const Left = 20;
const Width = 200;
const Height = 12;
const Steps = 50;

function scaleBar(quantity) {
  const scale = Scales[quantity];
  const bar = svg('svg', {
    width: Width + 2 * Left, height: 30, role: 'img', class: 'scale',
    'aria-label': `Colours from ${scale.low}${scale.unit}, dark blue, to ${scale.high}${scale.unit}, yellow`,
  });
  const step = Width / Steps;
  for (let i = 0; i < Steps; i++) {
    bar.append(svg('rect', {
      x: Left + i * step, y: 0, width: step + 0.3, height: Height, fill: colourOf(i / (Steps - 1)),
    }));
  }
  scale.marks.forEach((mark) => {
    const x = Left + shareOf(scale, mark) * Width;
    bar.append(svg('text', {x, y: 26, class: 'tick middle'}, `${mark}${scale.unit}`));
  });
  return bar;
}

function swatch(className, text, ...drawing) {
  const picture = svg('svg', {width: 20, height: 14, class: 'swatch', 'aria-hidden': 'true'});
  picture.append(...drawing);
  const item = document.createElement('span');
  item.className = `key ${className}`;
  item.append(picture, text);
  return item;
}

const box = (className) => svg('rect', {x: 0.5, y: 0.5, width: 19, height: 13, class: className});

export function drawLegend(place, quantity, limit) {
  const keys = document.createElement('span');
  keys.className = 'keys';
  if (quantity !== 'range') {
    keys.append(
      swatch('gross', `over ${limit}°`, box('gross'), svg('path', {d: 'M6 3l8 8M14 3l-8 8', class: 'cross'})),
      swatch('some', `some over ${limit}°`, box('plain'), svg('path', {d: 'M20 0v9l-9-9z', class: 'corner'})),
    );
  }
  keys.append(
    swatch('none', 'no estimate', box('silent'), svg('path', {d: 'M6 7h8', class: 'dash'})),
    swatch('empty', 'no talkers', box('empty'), svg('circle', {cx: 10, cy: 7, r: 1.5, class: 'dot'})),
  );
  place.replaceChildren(scaleBar(quantity), keys);
}
