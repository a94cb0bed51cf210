// SPDX-License-Identifier: MIT
'use strict';

// instructions.js FOLDER: instructions of a start and of a poll, by callgrind.

const fs = require('fs');
const { EventLog, pause } = require('../harness/events');
const { stage, connector, own, makeFolder, makeState, Program } = require('../harness/programs');

const folder = process.argv[2];
const pollSeconds = 0.1;
const firstPort = 3000; // where a connector is looked for that runs already
const fewPolls = 10;
const manyPolls = 110;
const limitMs = 120000;

/** Runs a program under callgrind until `isDone` says so of its log, then ends it; its instructions by object. */
async function instructionsOf(name, command, env, isDone) {
  const log = new EventLog(`${makeFolder('log')}/events`);
  const file = `${folder}/callgrind.${name}`;
  const valgrind = ['valgrind', '--quiet', '--tool=callgrind', `--callgrind-out-file=${file}`];
  const program = new Program([...valgrind, ...command], { env: { BENCH_LOG: log.path, ...env } });
  for (let waited = 0; !isDone(log.all()); waited += 20) {
    if (waited > limitMs) throw new Error(`${name} did not get to where it should`);
    await pause(20);
  }
  await program.end();
  return byObject(file);
}

// A line of costs belongs to the object named last, but for the one behind "calls=", which is that of the callee.
function byObject(file) {
  const counts = { all: 0, loader: 0 };
  const names = new Map();
  let isLoader = false;
  let isOfCallee = false;
  for (const line of fs.readFileSync(file, 'utf8').split('\n')) {
    const object = /^ob=(\(\d+\))(?: (.*))?$/.exec(line);
    if (object) {
      if (object[2]) names.set(object[1], object[2]);
      isLoader = names.get(object[1]).includes('/ld-linux');
    } else if (/^[0-9+*-]/.test(line) && !isOfCallee) {
      const count = Number(line.split(' ')[1]);
      counts.all += count;
      counts.loader += isLoader ? count : 0;
    }
    isOfCallee = line.startsWith('calls=');
    const callee = /^cob=(\(\d+\)) (.*)$/.exec(line);
    if (callee) names.set(callee[1], callee[2]);
  }
  return counts;
}

function tray(name, isDone) {
  const state = makeState({ pollSeconds });
  const env = { XDG_DATA_HOME: `${state.home}/data`, XDG_RUNTIME_DIR: state.run };
  return instructionsOf(name, [`${stage}/bin/orvanta-tray`, '--terminal'], env, isDone);
}

const has = (event) => (log) => log.some((entry) => entry.event === event);

// Of a connector that the tray finds running: valgrind does not know the descriptors by which it watches its own.
async function pollsOf(name, times) {
  const asked = new EventLog(`${makeFolder('asked')}/events`);
  const found = new Program([connector], { env: { BENCH_LOG: asked.path, PORT: String(firstPort) } });
  await asked.event('announced');
  const counts = await tray(name, () => asked.all().filter(({ event }) => event === 'asked').length >= times);
  await found.end();
  return counts;
}

const millions = (count) => (count / 1e6).toFixed(2);

async function main() {
  const bare = await instructionsOf('bare', [own('bare', 'bare_loop')], {}, has('turned'));
  const start = await tray('start', has('executed'));
  for (const [what, counts] of [['bare Qt Core program', bare], ['tray in the terminal', start]]) {
    console.log(`${what}, start and end: ${millions(counts.all)} million instructions, of them ${millions(counts.loader)} the loader's`);
  }
  const [few, many] = [await pollsOf('few-polls', fewPolls), await pollsOf('many-polls', manyPolls)];
  const each = (many.all - few.all) / (manyPolls - fewPolls);
  console.log('one poll of a connector that ran already, which is without the health record: '
    + `${Math.round(each).toLocaleString('en')} instructions in user mode, the mean of ${manyPolls - fewPolls}`);
  process.exit(0);
}

main();
