// SPDX-License-Identifier: MIT
'use strict';

// heap.js FOLDER: the heap of a tray that polls, and of one that installs an archive, by heaptrack. To be run by
// trees.sh.

const fs = require('fs');
const path = require('path');
const { execFileSync } = require('child_process');
const { EventLog, pause } = require('../harness/events');
const { stage, makeFolder, makeState } = require('../harness/programs');
const { Tray } = require('../install/tray');
const { withChannel, install } = require('./installation');

const folder = process.argv[2];
const pollSeconds = 0.05;
const fewPolls = 20;
const manyPolls = 220;

const fileOf = (name) => path.join(folder, `heaptrack.${name}`);
const underHeaptrack = (name) => ['heaptrack', '--output', fileOf(name)];

/** What heaptrack has recorded under that name, to whose file it adds an ending of its own. */
function reportOf(name) {
  const whole = fs.readdirSync(folder).find((file) => file.startsWith(`heaptrack.${name}.`));
  const text = execFileSync('heaptrack_print', ['-f', path.join(folder, whole)], { encoding: 'utf8', maxBuffer: 2 ** 28 });
  const said = (what) => new RegExp(`^${what}: (\\S+)`, 'm').exec(text)[1];
  return { allocations: Number(said('calls to allocation functions')), peak: said('peak heap memory consumption') };
}

async function pollsOf(name, times) {
  const state = makeState({ pollSeconds });
  const log = new EventLog(`${makeFolder('asked')}/events`);
  process.env.BENCH_LOG = log.path; // for the connector
  const tray = new Tray(`${stage}/bin/orvanta-tray`, `${state.home}/data`, underHeaptrack(name), state.run);
  while (log.all().filter(({ event }) => event === 'asked').length < times) await pause(20);
  await tray.quitByMenu();
  return reportOf(name);
}

async function main() {
  const [few, many] = [await pollsOf('few-polls', fewPolls), await pollsOf('many-polls', manyPolls)];
  const each = (many.allocations - few.allocations) / (manyPolls - fewPolls);
  console.log(`one poll with its health record: ${each.toFixed(0)} allocations; peak of the heap after ${fewPolls} `
    + `and after ${manyPolls}: ${few.peak}, ${many.peak}`);
  await withChannel((baseUrl) => install(baseUrl, underHeaptrack('install')));
  const { allocations, peak } = reportOf('install');
  console.log(`installation of 92 MB, from start to end: ${allocations} allocations, peak of the heap ${peak}`);
}

main();
