// A sweep's figures in tables.

import {fixed} from '../text.js';
import {html} from './svg.js';

export const Kinds = [
  ['frame_voice', 'single frames, voice on'],
  ['frame_always', 'single frames, at all times'],
  ['half_second_voice', 'half-second medians, voice on'],
  ['half_second_always', 'half-second medians, at all times'],
];

// A figure that is null is infinite where something was counted, else there is none.
const number = (value, digits, count = 0) =>
  value === null && count > 0 ? '∞' : fixed(value, digits);
const percent = (value) => (value === null || value === undefined ? '–' : `${fixed(100 * value, 1)} %`);

function table(head, rows) {
  const cell = (name, text, k) => html(name, {textContent: text, className: k === 0 ? 'first' : ''});
  const rowOf = (name) => (row) => html('tr', {}, ...row.map((text, k) => cell(name, text, k)));
  return html('table', {},
    html('thead', {}, rowOf('th')(head)), html('tbody', {}, ...rows.map(rowOf('td'))));
}

function errorRow(name, errors) {
  const {count, median, p90, gross, within_1: one} = errors;
  const isAngle = gross !== undefined;
  return [name, String(count), number(median, 2, count), number(p90, 2, count),
    isAngle ? percent(gross) : '–', percent(isAngle ? errors['within_0.5'] : undefined),
    percent(one), percent(isAngle ? undefined : errors['within_0.5'])];
}

export function figureTable(sweep, kind) {
  const errors = sweep[kind];
  const rows = [errorRow('azimuth °', errors.azimuth)];
  if (sweep.geometry.has_elevation) rows.push(errorRow('elevation °', errors.elevation));
  rows.push(errorRow('range m', errors.range));
  const near = errors.range_near;
  if (near.count > 0 && near.count < errors.range.count) rows.push(errorRow('range m, near', near));
  return table(['error of', 'count', 'median', '90 %', '> 15°', '≤ 0.5°', '≤ 1°', '≤ 0.5 m'], rows);
}

export function figureText(sweep) {
  const found = sweep.found_after;
  const median = found.median === null
    ? 'never found after a jump' : `found ${fixed(found.median, 0)} frames after a jump`;
  return [
    `${sweep.places} places, ${sweep.frames} frames`,
    `${median} (90 %: ${fixed(found.p90, 0)}), never ${percent(found.never)}`,
    `no estimate ${percent(sweep.no_estimate)}`,
    `voice flag on in ${percent(sweep.voice.hits)} of the frames with a talker, in ` +
      `${percent(sweep.voice.false_alarms)} of those long without one`,
  ].join(' · ');
}

export function overviewTable(sweeps, kind) {
  const head = ['array', 'azimuth °', '90 %', '> 15°', 'elevation °', '90 %', 'range m', '90 %',
    'found after', 'voice'];
  return table(head, sweeps.map((sweep) => {
    const {azimuth, elevation, range} = sweep[kind];
    return [sweep.array, number(azimuth.median, 2, azimuth.count),
      number(azimuth.p90, 2, azimuth.count), percent(azimuth.gross),
      number(elevation.median, 2, elevation.count), number(elevation.p90, 2, elevation.count),
      number(range.median, 2, range.count), number(range.p90, 2, range.count),
      fixed(sweep.found_after.median, 0), percent(sweep.voice.hits)];
  }));
}
