// Runs of the program for the checks of its page.

import {spawnSync} from 'node:child_process';
import {readFileSync, writeFileSync} from 'node:fs';

const HourFrames = 84375;

export function locate(program, folder, args, status = 0) {
  const array = ['--raw', 'S16', '--raw-channels', '6', '--array', 'aster'];
  const run = spawnSync(program, ['locate', `${folder}/talkers.raw`, ...array, ...args], {
    cwd: folder, encoding: 'utf8',
  });
  if (run.status !== status) throw new Error(`locate ended with ${run.status}: ${run.stderr}`);
  return run;
}

// The rows of a run as objects of numbers.
export function readCsv(path) {
  const [, names, ...lines] = readFileSync(path, 'utf8').trim().split('\n');
  lines.pop(); // the summary
  const columns = names.split(',');
  return lines.map((line) => {
    const cells = line.split(',');
    return Object.fromEntries(columns.map((name, k) => [name, numberOf(cells[k])]));
  });
}

function numberOf(text) {
  return text === '-inf' ? -Infinity : text === 'nan' ? NaN : Number(text);
}

// The same page with its frames over and over: an hour of them.
export function stretchToAnHour(from, to) {
  const page = readFileSync(from, 'utf8');
  const block = /<script type="application\/octet-stream" class="frames"[^>]*data-count="(\d+)">([^<]*)<\/script>\n/g;
  const found = [...page.matchAll(block)];
  let text = '';
  let first = 0;
  while (first < HourFrames) {
    for (const [, count, bytes] of found) {
      if (first + Number(count) > HourFrames) {
        first = HourFrames;
        break;
      }
      text += `<script type="application/octet-stream" class="frames" data-first="${first}" ` +
        `data-sample="${first * 2048}" data-count="${count}">${bytes}</script>\n`;
      first += Number(count);
    }
  }
  const begin = found[0].index;
  const end = found.at(-1).index + found.at(-1)[0].length;
  writeFileSync(to, page.slice(0, begin) + text + page.slice(end));
}
