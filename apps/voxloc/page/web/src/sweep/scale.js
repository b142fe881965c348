// From an error to a colour: the logarithm of the error on a perceptually even scale.

import {cividis} from '../palette.js';
import {fixed} from '../text.js';

// Ends and marks of the legend. An angle beyond the upper end is a gross error.
export const Scales = {
  azimuth: {unit: '°', low: 0.1, high: 15, marks: [0.1, 0.3, 1, 3, 15]},
  elevation: {unit: '°', low: 0.1, high: 15, marks: [0.1, 0.3, 1, 3, 15]},
  range: {unit: ' m', low: 0.05, high: 5, marks: [0.05, 0.2, 1, 5]},
};

export function shareOf(scale, value) {
  const share = Math.log(value / scale.low) / Math.log(scale.high / scale.low);
  return Math.max(0, Math.min(1, value > 0 ? share : 0));
}

export const colourOf = (share) => `rgb(${cividis(share).join(' ')})`;

// What reads on that colour.
export const inkOn = (share) => (share < 0.54 ? '#fff' : '#111');

// Two digits that count, as far as they matter; null stands for infinite.
export function errorText(value) {
  if (value === null) return '∞';
  return fixed(value, value < 0.995 ? 2 : value < 9.95 ? 1 : 0);
}

export const withUnit = (quantity, value) => errorText(value) + Scales[quantity].unit;

export const isGross = (quantity, value, limit) =>
  quantity !== 'range' && (value === null || value > limit);
