// SPDX-License-Identifier: MIT
'use strict';

// The time from a connector's announcement until the icon is Online and the tray hands the session bus the news
// of it, or until that is in the output of the terminal front end. Beside it, the least that somebody can do who
// learns the port in the same way: read the announcement, ask for the status, have the reply. And the same
// request once more, to a connector that has been asked before.
//
// From the tray's hands to the panel the news takes the bus's time, which is the same for everybody: when the
// panel has it is reported, not judged.
//
// An icon that is Online already has nothing to say. So the connector is killed halfway between two
// polls, one second apart: the next poll finds nobody, the successor comes halfway between that one and
// the next, and whoever waited for that would be half a second late.

const { execFileSync } = require('child_process');
const { alternate, medianOf, holds, record } = require('../harness/figures');
const { EventLog, pause, now, milliseconds } = require('../harness/events');
const { own, connector, makeFolder, makeState, startInTerminal, Tray, startWatcher } = require('../harness/programs');

const pollSeconds = 1;
const killsPerTurn = 10;
const requestsPerTurn = 30;
const restMs = 500 * pollSeconds;
const untilDeparture = 'Orvanta';
const untilPanel = 'Orvanta until the panel has it';
const inTerminal = 'Orvanta in the terminal';

async function halfwayBetweenPolls(log) {
  const poll = await log.event('asked', now());
  await pause(Math.max(0, 500 * pollSeconds - milliseconds(poll.time, now())));
}

// From the announcement until the first event that fits each of `isOnline`.
async function becomeOnline(log, isOffline, ...isOnline) {
  await halfwayBetweenPolls(log);
  const { pid } = log.all().filter(({ event }) => event === 'executed').pop();
  const killed = now();
  process.kill(pid, 'SIGKILL');
  await log.next(isOffline, killed);
  const announced = await log.event('announced', killed);
  const times = [];
  for (const fits of isOnline) times.push(milliseconds(announced.time, (await log.next(fits, announced.time)).time));
  return times;
}

async function repeat(times, measure) {
  const values = [];
  for (let i = 0; i < times; ++i) values.push(await measure());
  return values;
}

async function onDesktop() {
  const tray = new Tray(makeState({ pollSeconds }), { env: { LD_PRELOAD: own('harness', 'departure.so') } });
  await startWatcher(tray.log);
  const says = (title) => (entry) => entry.event === 'state' && entry.text === title;
  // Nothing else happens to the icon between the announcement and Online.
  const isDeparture = ({ event }) => event === 'departed';
  await tray.log.next(says('Orvanta Online'));
  const arrivals = [];
  const measure = async () => {
    const [departure, arrival] = await becomeOnline(tray.log, says('Orvanta Offline'), isDeparture, says('Orvanta Online'));
    arrivals.push(arrival);
    return departure;
  };
  return { measure, arrivals };
}

async function onTerminal() {
  const tray = startInTerminal(makeState({ pollSeconds }));
  const says = (line) => (entry) => entry.event === 'printed' && entry.text.includes(line);
  await tray.log.next(says('Status: Online'));
  return { tray, measure: () => becomeOnline(tray.log, says('Status: Offline'), says('Status: Online')) };
}

// After as long a rest as the tray has had since the poll that found nobody: whoever comes from work is quicker.
async function firstRequest() {
  await pause(restMs);
  const log = new EventLog(`${makeFolder('first')}/events`);
  execFileSync(own('harness', 'first_get'), [connector], { env: { ...process.env, BENCH_LOG: log.path } });
  const time = (name) => log.all().find(({ event }) => event === name).time;
  return milliseconds(time('announced'), time('replied'));
}

function rawRequests(log) {
  const port = log.all().filter(({ event }) => event === 'announced').pop().text;
  const output = execFileSync(own('harness', 'get'), [port, String(requestsPerTurn)], { encoding: 'utf8' });
  return output.split('\n').filter(Boolean).map((nanoseconds) => Number(nanoseconds) / 1e6);
}

async function main(results) {
  const desktop = await onDesktop();
  const terminal = await onTerminal();
  const { series, note } = await alternate([
    { name: untilDeparture, role: 'ours', measure: () => repeat(killsPerTurn, desktop.measure) },
    { name: inTerminal, role: 'ours', measure: async () => (await repeat(killsPerTurn, terminal.measure)).flat() },
    { name: 'one raw GET at the announcement', role: 'limit', measure: () => repeat(killsPerTurn, firstRequest) },
    { name: 'one raw GET later', role: 'other', measure: () => rawRequests(terminal.tray.log) },
  ]);
  const limit = medianOf(series, 'limit');
  const met = [untilDeparture, inTerminal].every((name) =>
    holds((mine) => mine <= 2 * limit, medianOf(series, name), limit));
  if (series[0].name === untilDeparture) {
    series.splice(1, 0, { name: untilPanel, role: 'ours', values: desktop.arrivals });
  }
  record(results, {
    figure: 'ready', title: 'connector announced until the icon is Online', unit: 'ms', series,
    bar: '2 × one status GET over a new connection, from the announcement to the reply, at most; the panel’s arrival is reported', met, note,
  });
  process.exit(0);
}

main(process.argv[2]);
