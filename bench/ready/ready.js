// SPDX-License-Identifier: MIT
'use strict';

// The time from a connector's announcement until the icon is Online and the tray says so on the session bus,
// or until that is in the output of the terminal front end. Beside it, the least that somebody can do who
// learns the port in the same way: read the announcement, ask for the status, have the reply. And the same
// request once more, to a connector that has been asked before.
//
// Only the panel can tell when it hears of the icon. What a signal takes from a program's hands through the
// toolkit and the bus to the panel is measured by itself and taken off: it is no part of the icon's state, and
// the same for everybody.
//
// An icon that is Online already has nothing to say. So the connector is killed halfway between two
// polls, one second apart: the next poll finds nobody, the successor comes halfway between that one and
// the next, and whoever waited for that would be half a second late.

const { execFileSync } = require('child_process');
const { alternate, medianOf, holds, record } = require('../harness/figures');
const { EventLog, pause, now, milliseconds } = require('../harness/events');
const { own, connector, makeFolder, makeState, Program, startInTerminal, Tray, startWatcher } = require('../harness/programs');

const pollSeconds = 1;
const killsPerTurn = 6;
const requestsPerTurn = 30;
const lessSignal = 'Orvanta, less the median of the signal alone';
const untilPanel = 'Orvanta until the panel has it';
const bySignal = 'a signal on the session bus until the panel has it';

async function halfwayBetweenPolls(log) {
  const poll = await log.event('asked', now());
  await pause(Math.max(0, 500 * pollSeconds - milliseconds(poll.time, now())));
}

async function becomeOnline(log, isOffline, isOnline) {
  await halfwayBetweenPolls(log);
  const { pid } = log.all().filter(({ event }) => event === 'executed').pop();
  const killed = now();
  process.kill(pid, 'SIGKILL');
  await log.next(isOffline, killed);
  const announced = await log.event('announced', killed);
  const online = await log.next(isOnline, announced.time);
  return milliseconds(announced.time, online.time);
}

async function repeat(times, measure) {
  const values = [];
  for (let i = 0; i < times; ++i) values.push(await measure());
  return values;
}

async function onDesktop() {
  const tray = new Tray(makeState({ pollSeconds }));
  await startWatcher(tray.log);
  const says = (title) => (entry) => entry.event === 'state' && entry.text === title;
  await tray.log.next(says('Orvanta Online'));
  return { tray, measure: () => becomeOnline(tray.log, says('Orvanta Offline'), says('Orvanta Online')) };
}

async function inTerminal() {
  const tray = startInTerminal(makeState({ pollSeconds }));
  const says = (line) => (entry) => entry.event === 'printed' && entry.text.includes(line);
  await tray.log.next(says('Status: Online'));
  return { tray, measure: () => becomeOnline(tray.log, says('Status: Offline'), says('Status: Online')) };
}

function firstRequest() {
  const log = new EventLog(`${makeFolder('first')}/events`);
  execFileSync(own('harness', 'first_get'), [connector], { env: { ...process.env, BENCH_LOG: log.path } });
  const time = (name) => log.all().find(({ event }) => event === name).time;
  return milliseconds(time('announced'), time('replied'));
}

async function startSignal(log) {
  const signal = new Program([own('harness', 'signal')], { env: { BENCH_LOG: log.path }, output: 'pipe' });
  await new Promise((resolve) => signal.child.stdout.once('data', resolve));
  return async () => {
    const before = now();
    signal.child.stdin.write('\n');
    const sent = await log.event('sent', before);
    return milliseconds(sent.time, (await log.event('seen', sent.time)).time);
  };
}

function rawRequests(log) {
  const port = log.all().filter(({ event }) => event === 'announced').pop().text;
  const output = execFileSync(own('harness', 'get'), [port, String(requestsPerTurn)], { encoding: 'utf8' });
  return output.split('\n').filter(Boolean).map((nanoseconds) => Number(nanoseconds) / 1e6);
}

async function main(results) {
  const desktop = await onDesktop();
  const terminal = await inTerminal();
  const signal = await startSignal(desktop.tray.log);
  const { series, note } = await alternate([
    { name: untilPanel, role: 'ours', measure: () => repeat(killsPerTurn, desktop.measure) },
    { name: 'Orvanta in the terminal', role: 'ours', measure: () => repeat(killsPerTurn, terminal.measure) },
    { name: 'one raw GET at the announcement', role: 'limit', measure: () => repeat(killsPerTurn, firstRequest) },
    { name: bySignal, role: 'other', measure: () => repeat(killsPerTurn, signal) },
    { name: 'one raw GET later', role: 'other', measure: () => rawRequests(terminal.tray.log) },
  ]);
  const bus = medianOf(series, bySignal);
  const arrivals = series.find(({ name }) => name === untilPanel);
  if (arrivals && bus !== undefined) {
    series.unshift({ name: lessSignal, role: 'ours', values: arrivals.values.map((value) => value - bus) });
  }
  const limit = medianOf(series, 'limit');
  const met = [lessSignal, 'Orvanta in the terminal'].every((name) =>
    holds((mine) => mine <= 2 * limit, medianOf(series, name), limit));
  record(results, {
    figure: 'ready', title: 'connector announced until the icon is Online', unit: 'ms', series,
    bar: '2 × one status GET over a new connection, from the announcement to the reply, at most; the panel’s arrival is reported', met, note,
  });
  process.exit(0);
}

main(process.argv[2]);
