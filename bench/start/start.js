// SPDX-License-Identifier: MIT
'use strict';

// Starts the tray on a store that is there already, without a look for updates, and waits until the
// connector is executed; beside it programs that only reach the first turn of the toolkit's main loop, or
// only bring an icon to the panel. All are timed from the moment at which they are executed.

const fs = require('fs');
const { rounds, alternate, medianOf, holds, record } = require('../harness/figures');
const { EventLog, pause, milliseconds } = require('../harness/events');
const { own, makeFolder, makeState, Program, Tray, startInTerminal, startWatcher } = require('../harness/programs');

const startsPerTurn = 3;
// One start is up to half longer than the next one, of whatever program: it takes many to tell two apart.
const roundsInTerminal = 12 * rounds;
const staleVersions = 100;

// Starts a program of its own log, waits for the events of `names`, ends it; the times in their order.
async function timed(log, start, names) {
  fs.writeFileSync(log.path, '');
  const program = start();
  try {
    const { time: launched } = await log.event('launched');
    const times = [];
    for (const name of names) times.push(milliseconds(launched, (await log.event(name, launched, 30000)).time));
    return times;
  } finally {
    await program.end();
    await pause(100);
  }
}

async function repeat(measure) {
  const values = [];
  for (let i = 0; i < startsPerTurn; ++i) values.push(await measure());
  return values;
}

function launch(log, command, env = {}) {
  return new Program([own('harness', 'launch'), ...command], { env: { BENCH_LOG: log.path, ...env } });
}

// Until the connector is executed; the times until `then`, which comes later, are kept aside.
function tray(state, log, { terminal = false, then, later }) {
  return repeat(async () => {
    const [executed, last] = await timed(log, () => new Tray(state, { terminal, log }), ['executed', then]);
    later.push(last);
    return executed;
  });
}

function other(log, command, event, env) {
  return repeat(async () => (await timed(log, () => launch(log, command, env), [event]))[0]);
}

function syncthingTray(log) {
  const home = makeFolder('syncthingtray');
  // Without settings it asks for them in a dialog, and shows its icon once that is answered.
  fs.writeFileSync(`${home}/syncthingtray.ini`, '[General]\nv=1.3.2\n[tray]\nconnections\\size=1\n');
  return other(log, ['syncthingtray', '--wait'], 'registered', { XDG_CONFIG_HOME: home });
}

async function inTerminal(results, log) {
  const state = makeState();
  const running = [];
  const { series, note } = await alternate([
    {
      name: 'Orvanta in the terminal', role: 'ours',
      measure: () => tray(state, log, { terminal: true, then: 'running', later: running }),
    },
    { name: 'bare Qt Core program', role: 'limit', measure: () => other(log, [own('bare', 'bare_loop')], 'turned') },
    { name: 'the same with libcurl', role: 'other', measure: () => other(log, [own('bare', 'bare_core')], 'turned') },
  ], roundsInTerminal);
  const met = holds((mine, limit) => mine <= 1.5 * limit, medianOf(series, 'ours'), medianOf(series, 'limit'));
  series.push({ name: "Orvanta until the connector's C library is ready too", role: 'ours', values: running });
  record(results, {
    figure: 'start_terminal', title: "terminal front end started until the connector's first instruction", unit: 'ms',
    series, bar: '1.5 × the start of a bare Qt Core program at most', met, note,
  });
}

async function onDesktop(results, log) {
  const state = makeState();
  const icons = [];
  const { series, note } = await alternate([
    { name: 'Orvanta', role: 'ours', measure: () => tray(state, log, { then: 'registered', later: icons }) },
    { name: 'Syncthing Tray', role: 'peer', measure: () => syncthingTray(log) },
    { name: 'bare Qt tray', role: 'limit', measure: () => other(log, [own('bare', 'bare_tray')], 'registered') },
  ]);
  const met = holds((mine, limit) => mine <= 1.3 * limit, medianOf(series, 'Orvanta'), medianOf(series, 'limit'));
  series.splice(1, 0, { name: 'Orvanta until its icon is registered', role: 'ours', values: icons });
  record(results, {
    figure: 'start_tray', title: "tray started until the connector's first instruction (others: until the icon is registered)",
    unit: 'ms', series, bar: '1.3 × the start of a bare Qt tray at most', met, note,
  });
}

// Nothing refers to the stale versions, so the first answer of the connector has them all removed: each
// start gets a store of its own. They are moved out of the way after Online is shown; what that takes is the
// growth of bench/store, "superfluous versions".
async function staleStart(stale, log, executed) {
  const program = await timedProgram(stale, log);
  try {
    const { time: launched } = await log.event('launched');
    executed.push(milliseconds(launched, (await log.event('executed', launched)).time));
    const isOnline = ({ event, text }) => event === 'printed' && text.includes('Status: Online');
    const online = await log.next(isOnline, launched);
    return milliseconds(launched, online.time);
  } finally {
    await program.end();
  }
}

async function timedProgram(stale, log) {
  const state = makeState({ stale });
  await pause(200);
  fs.writeFileSync(log.path, '');
  return startInTerminal(state, log).program;
}

async function withStaleVersions(results, log) {
  const [empty, full] = [[], []];
  const contender = (name, role, stale, executed) =>
    ({ name, role, measure: () => repeat(() => staleStart(stale, log, executed)) });
  const { series, note } = await alternate([
    contender(`${staleVersions} stale versions, until Online`, 'ours', staleVersions, full),
    contender('none, until Online', 'limit', 0, empty),
  ]);
  const untilExecuted = (name, values) =>
    series.push({ name: `${name}, until the connector is executed`, role: 'other', values });
  untilExecuted(`${staleVersions} stale versions`, full);
  untilExecuted('none', empty);
  record(results, {
    figure: 'start_stale', title: 'terminal front end started with stale versions in the store', unit: 'ms', series,
    bar: 'reported', met: null, note,
  });
}

async function main(results) {
  const log = new EventLog(`${makeFolder('log')}/events`);
  await startWatcher(log);
  await inTerminal(results, log);
  await onDesktop(results, log);
  await withStaleVersions(results, log);
  process.exit(0);
}

main(process.argv[2]);
