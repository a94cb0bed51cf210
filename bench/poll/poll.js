// SPDX-License-Identifier: MIT
'use strict';

// The processor time of one poll, from many at short intervals, all of them of the same connector: the demo,
// whose status document is a whole one. Connections are counted by the system, so that a poll that was left
// out cannot make the others look cheap. Every 2 ms, polls tell what the work costs; with 20 ms between them a
// virtual processor goes to sleep and comes back with cold caches, which is reported beside it and doubles what
// everybody takes.

const { alternate, medianOf, holds, record } = require('../harness/figures');
const { pause } = require('../harness/events');
const { own, makeState, Program, Tray } = require('../harness/programs');
const { usage, acceptedConnections } = require('../harness/processes');

const intervals = [
  { seconds: 0.002, figure: 'poll-busy', words: 'every 2 ms', bar: '0.4 ms at most', isMet: (mine) => mine <= 0.4 },
  { seconds: 0.02, figure: 'poll-paused', words: 'every 20 ms', bar: 'reported' },
];
const settleMs = 1000;
const longestStartMs = 20000;
const measureMs = 2000;

// Until the polls come: a connector may have to start first.
async function settle(countsConnections) {
  const before = acceptedConnections();
  for (let waited = 0; countsConnections && waited < longestStartMs && acceptedConnections() < before + 10; waited += 50) await pause(50);
  await pause(settleMs);
}

async function perPoll(program, seconds, countsConnections) {
  await settle(countsConnections);
  const before = { ...usage([program.pid]), polls: acceptedConnections() };
  await pause(measureMs);
  const after = { ...usage([program.pid]), polls: acceptedConnections() };
  await program.end();
  const wanted = measureMs / 1000 / seconds;
  const polls = countsConnections ? after.polls - before.polls : wanted;
  if (polls < wanted / 10) throw new Error(`${polls} polls instead of ${wanted}`);
  return (after.ms - before.ms) / polls;
}

function ours(seconds) {
  const state = () => makeState({ pollSeconds: seconds, runtime: process.execPath });
  return () => perPoll(new Tray(state(), { terminal: true }), seconds, true);
}

function client(kind, url, seconds, countsConnections = true) {
  return () => perPoll(new Program([own('poll', 'poll_client'), kind, url, String(seconds)]), seconds, countsConnections);
}

// A demo connector that no tray looks after.
async function startDemo() {
  const { root, version } = makeState();
  const server = `${version('9.0.0')}/local-server/server.js`;
  const demo = new Program([process.execPath, server], { env: { PORT: '0', ORVANTA_STATE_ROOT: root }, output: 'pipe' });
  const said = await new Promise((resolve, reject) => {
    demo.child.stdout.once('data', (line) => resolve(String(line)));
    demo.ended.then(() => reject(new Error('the demo connector could not be started')));
  });
  return `${/http:\/\/[0-9.:]+/.exec(said)[0]}/api/ov/status`;
}

// Requests over one connection cannot be counted, and at the shorter interval some would be left out.
function contenders(url, seconds, figure) {
  const counted = [
    { name: 'Orvanta in the terminal', role: 'ours', measure: ours(seconds) },
    { name: 'Qt Network, the GET alone', role: 'peer', measure: client('qt-loop', url, seconds) },
    { name: 'libcurl, new connection, the GET alone', role: 'limit', measure: client('curl-loop', url, seconds) },
  ];
  const kept = { name: 'libcurl, kept alive, the GET alone', role: 'other', measure: client('curl-kept', url, seconds, false) };
  return figure === 'poll-busy' ? counted : [...counted, kept];
}

async function measure(results, url, { seconds, figure, words, bar, isMet }) {
  const { series, note } = await alternate(contenders(url, seconds, figure));
  record(results, {
    figure, title: `processor time of one status poll, decoding and health record included, ${words}`, unit: 'ms', series,
    bar, met: isMet && holds(isMet, medianOf(series, 'ours')), note,
  });
}

async function main(results) {
  const url = await startDemo();
  for (const one of intervals) await measure(results, url, one);
  process.exit(0);
}

main(process.argv[2]);
