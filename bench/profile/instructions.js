// SPDX-License-Identifier: MIT
'use strict';

// instructions.js FOLDER: instructions in user mode of a start, of a poll and of an installation, by callgrind. To be
// run by trees.sh.

const path = require('path');
const { EventLog, pause } = require('../harness/events');
const { stage, own, makeFolder, makeState, Program } = require('../harness/programs');
const { underCallgrind, threadsOf } = require('./callgrind');
const { withChannel, install } = require('./installation');

const folder = process.argv[2];
const pollSeconds = 0.1;
const fewPolls = 10;
const manyPolls = 110;
const limitMs = 120000;

const fileOf = (name) => path.join(folder, `callgrind.${name}`);

/** Runs a program until `isDone` says so of its log, then ends it; the instructions of its main thread. */
async function mainThreadOf(name, command, env, isDone) {
  const log = new EventLog(`${makeFolder('log')}/events`);
  const program = new Program([...underCallgrind(fileOf(name)), ...command], { env: { BENCH_LOG: log.path, ...env } });
  for (let waited = 0; !isDone(log.all()); waited += 20) {
    if (waited > limitMs) throw new Error(`${name} did not get to where it should`);
    await pause(20);
  }
  await program.end();
  return threadsOf(fileOf(name))[0];
}

function tray(name, isDone) {
  const state = makeState({ pollSeconds });
  const env = { XDG_DATA_HOME: `${state.home}/data`, XDG_RUNTIME_DIR: state.run };
  return mainThreadOf(name, [`${stage}/bin/orvanta-tray`, '--terminal'], env, isDone);
}

const has = (event) => (log) => log.some((entry) => entry.event === event);
const hasPolls = (times) => (log) => log.filter(({ event }) => event === 'asked').length >= times;

const millions = (count) => `${(count / 1e6).toFixed(2)} million`;

/** The objects that most of them are in. */
function largest({ objects }) {
  const few = [...objects].sort((one, other) => other[1] - one[1]).slice(0, 4);
  return few.map(([name, count]) => `${millions(count)} in ${name}`).join(', ');
}

async function starts() {
  const bare = await mainThreadOf('bare', [own('bare', 'bare_loop')], {}, has('turned'));
  const start = await tray('start', has('executed'));
  for (const [what, counts] of [['bare Qt Core program', bare], ['tray in the terminal', start]]) {
    console.log(`${what}, start and end: ${millions(counts.all)} instructions on the main thread: ${largest(counts)}`);
  }
}

async function polls() {
  const [few, many] = [await tray('few-polls', hasPolls(fewPolls)), await tray('many-polls', hasPolls(manyPolls))];
  const each = (many.all - few.all) / (manyPolls - fewPolls);
  console.log(`one poll with its health record: ${Math.round(each).toLocaleString('en')} instructions on the main thread, `
    + `the mean of ${manyPolls - fewPolls}`);
}

async function installation() {
  await withChannel((baseUrl) => install(baseUrl, underCallgrind(fileOf('install'))));
  const [main, ...others] = threadsOf(fileOf('install'));
  const [worker] = others.sort((one, other) => other.all - one.all);
  console.log(`installation of 92 MB, from start to end: ${millions(main.all)} instructions on the main thread: ${largest(main)}`);
  console.log(`  and ${millions(worker.all)} on the worker: ${largest(worker)}`);
}

async function main() {
  await starts();
  await polls();
  await installation();
  process.exit(0);
}

main();
