// SPDX-License-Identifier: MIT
'use strict';

// Tells the tray to go and waits for the end of its process: by Quit in its menu, as a panel chooses it,
// and by the signal with which sessions end.

const { alternate, medianOf, holds, record } = require('../harness/figures');
const { pause, now, milliseconds } = require('../harness/events');
const { makeState, Tray, startWatcher } = require('../harness/programs');

const quitsPerTurn = 3;
const limitMs = 50;

// Leaves the panel to the tray alone: a log of its own for each.
async function byMenu(state) {
  const tray = new Tray(state);
  const watcher = await startWatcher(tray.log);
  await tray.log.event('asked');
  await tray.log.event('registered');
  await pause(300);
  watcher.child.stdin.write('Quit\n');
  await tray.program.ended;
  const gone = now();
  const { time } = await tray.log.event('chosen');
  await watcher.end();
  return milliseconds(time, gone);
}

async function bySignal(state, terminal) {
  const tray = new Tray(state, { terminal });
  await tray.log.event('asked');
  await pause(300);
  const told = now();
  tray.program.child.kill('SIGTERM');
  await tray.program.ended;
  return milliseconds(told, now());
}

async function repeat(measure) {
  const values = [];
  for (let i = 0; i < quitsPerTurn; ++i) values.push(await measure());
  return values;
}

async function main(results) {
  const state = makeState();
  const { series, note } = await alternate([
    { name: 'Quit in the menu', role: 'ours', measure: () => repeat(() => byMenu(state)) },
    { name: 'SIGTERM', role: 'ours', measure: () => repeat(() => bySignal(state, false)) },
    { name: 'SIGTERM in the terminal', role: 'ours', measure: () => repeat(() => bySignal(state, true)) },
  ]);
  const met = series.length === 3 && series.every(({ name }) => medianOf(series, name) < limitMs);
  record(results, { figure: 'quit', title: 'told to go until the process is gone', unit: 'ms', series,
    bar: `under ${limitMs} ms`, met, note });
  process.exit(0);
}

main(process.argv[2]);
