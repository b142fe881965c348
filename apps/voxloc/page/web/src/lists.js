// Turns and differences as tables whose rows lead to their place in the plots.

import {clockText, fixed} from './text.js';
import {indexOfFrame} from './data.js';

function table(parent, titles, rows, onChoose) {
  const element = document.createElement('table');
  const head = element.createTHead().insertRow();
  for (const title of titles) {
    const cell = document.createElement('th');
    cell.scope = 'col';
    cell.textContent = title;
    head.append(cell);
  }
  const body = element.createTBody();
  rows.forEach((texts, k) => {
    const row = body.insertRow();
    texts.forEach((text, column) => {
      const cell = row.insertCell();
      if (column > 0) {
        cell.textContent = text;
        return;
      }
      const button = document.createElement('button');
      button.type = 'button';
      button.textContent = text;
      cell.append(button);
    });
    row.addEventListener('click', () => {
      element.querySelector('.chosen')?.classList.remove('chosen');
      row.classList.add('chosen');
      onChoose(k);
    });
  });
  parent.append(element);
}

// Turns come as frames; the plots want seconds.
export function placeTurns(run) {
  for (const turn of run.turns) {
    turn.firstIndex = indexOfFrame(run, turn.first);
    turn.from = run.time[turn.firstIndex];
    turn.to = run.time[indexOfFrame(run, turn.last)] + run.frameSeconds;
  }
}

export function listTurns(section, run, goTo) {
  const share = run.frames ? (100 * run.voiceFrames) / run.frames : 0;
  section.querySelector('#turn-count').textContent =
    `${run.turns.length} in ${clockText(run.frames * run.frameSeconds, 1)}, ` +
    `voice in ${fixed(share, 0)} % of the frames`;
  if (!run.turns.length) return;
  table(
    section.querySelector('.table'),
    ['turn', 'from', 'to', 'azim. °', 'elev. °', 'range m', 'quality'],
    run.turns.map((turn, k) => [
      String(k + 1),
      clockText(turn.from, 1),
      clockText(turn.to, 1),
      fixed(turn.azimuth, 1),
      fixed(turn.elevation, 1),
      fixed(turn.range, 1),
      fixed(turn.quality, 2),
    ]),
    (k) => goTo(run.turns[k].from, run.turns[k].to, run.turns[k].firstIndex),
  );
}

function countsText(comparison) {
  const parts = [
    `${comparison.frames} frames compared with ${comparison.name}`,
    `${comparison.differing} differ`,
    `${comparison.beyond} beyond the tolerance of ${comparison.tolerance}°`,
  ];
  if (comparison.only_here) parts.push(`${comparison.only_here} in this run alone`);
  if (comparison.only_there) parts.push(`${comparison.only_there} in the other alone`);
  return `${parts.join(', ')}.`;
}

const orNone = (value, digits) => (value === null ? 'none in one' : fixed(value, digits));

export function listDifferences(section, run, goTo) {
  const {comparison} = run;
  if (!comparison) return;
  section.hidden = false;
  section.querySelector('p').textContent = countsText(comparison);
  if (!comparison.worst.length) return;
  const changes = (row) =>
    [...(row.estimate ? ['estimate'] : []), ...run.flags.filter((_, k) => row.flags & (1 << k))]
      .join(', ');
  const indexes = comparison.worst.map((row) => indexOfFrame(run, row.frame));
  table(
    section.querySelector('.table'),
    ['frame', 'time', 'azim. °', 'elev. °', 'range m', 'quality', 'changed'],
    comparison.worst.map((row, k) => [
      String(row.frame),
      clockText(run.time[indexes[k]], 2),
      orNone(row.azimuth, 1),
      orNone(row.elevation, 1),
      orNone(row.range, 2),
      orNone(row.quality, 3),
      changes(row),
    ]),
    (k) => {
      const time = run.time[indexes[k]];
      goTo(time - 1, time + 1, indexes[k]);
    },
  );
}
