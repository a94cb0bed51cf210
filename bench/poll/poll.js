// SPDX-License-Identifier: MIT
'use strict';

// The processor time of one poll, from many at short intervals, all of them of the same connector: the demo,
// whose status document is a whole one. Connections are counted by the system, so that a poll that was left
// out cannot make the others look cheap.

const { alternate, medianOf, holds, record } = require('../harness/figures');
const { pause } = require('../harness/events');
const { own, makeState, Program, Tray } = require('../harness/programs');
const { usage, acceptedConnections } = require('../harness/processes');

const intervalSeconds = 0.02;
const settleMs = 1000;
const longestStartMs = 20000;
const measureMs = 2000;
const intervals = measureMs / 1000 / intervalSeconds;

// Until the polls come: a connector may have to start first.
async function settle(countsConnections) {
  const before = acceptedConnections();
  for (let waited = 0; countsConnections && waited < longestStartMs && acceptedConnections() < before + 10; waited += 50) await pause(50);
  await pause(settleMs);
}

async function perPoll(program, countsConnections) {
  await settle(countsConnections);
  const before = { ...usage([program.pid]), polls: acceptedConnections() };
  await pause(measureMs);
  const after = { ...usage([program.pid]), polls: acceptedConnections() };
  await program.end();
  const polls = countsConnections ? after.polls - before.polls : intervals;
  if (polls < intervals / 10) throw new Error(`${polls} polls instead of ${intervals}`);
  return (after.ms - before.ms) / polls;
}

const ours = (terminal) => () => perPoll(new Tray(makeState({ pollSeconds: intervalSeconds, runtime: process.execPath }), { terminal }), true);

function client(kind, url, countsConnections = true) {
  return () => perPoll(new Program([own('poll', 'poll_client'), kind, url, String(intervalSeconds)]), countsConnections);
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

async function main(results) {
  const url = await startDemo();
  const { series, note } = await alternate([
    { name: 'Orvanta in the terminal', role: 'ours', measure: ours(true) },
    { name: 'Qt Network, the GET alone', role: 'peer', measure: client('qt-loop', url) },
    { name: 'libcurl, new connection, the GET alone', role: 'peer', measure: client('curl-loop', url) },
    { name: 'libcurl, kept alive, the GET alone', role: 'limit', measure: client('curl-kept', url, false) },
  ]);
  record(results, {
    figure: 'poll', title: 'processor time of one status poll, decoding and health record included', unit: 'ms', series,
    bar: '0.4 ms at most', met: holds((mine) => mine <= 0.4, medianOf(series, 'ours')), note,
  });
  process.exit(0);
}

main(process.argv[2]);
