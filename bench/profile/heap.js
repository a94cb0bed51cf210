// SPDX-License-Identifier: MIT
'use strict';

// heap.js FOLDER: the heap of a tray that polls, and of one that installs an archive, by heaptrack. To be run by
// trees.sh.

const fs = require('fs');
const path = require('path');
const { execFileSync } = require('child_process');
const { EventLog, pause } = require('../harness/events');
const { makeFolder, makeState } = require('../harness/programs');
const { publishAndServe } = require('../install/channel');
const { makeRuntime } = require('../install/generated_runtime');
const { Tray, makeStateRoot } = require('../install/tray');

const demo = path.resolve(__dirname, '../../demo/local-server');
const trees = process.env.BENCH_TREES;
const executable = path.join(process.env.BENCH_BUILD, 'stage/bin/orvanta-tray');
const folder = process.argv[2];
const pollSeconds = 0.05;
const fewPolls = 20;
const manyPolls = 220;

/** What heaptrack has recorded in `file`, to which it adds an ending of its own. */
function reportOf(file) {
  const whole = fs.readdirSync(folder).find((name) => name.startsWith(`${path.basename(file)}.`));
  const text = execFileSync('heaptrack_print', ['-f', path.join(folder, whole)], { encoding: 'utf8', maxBuffer: 2 ** 28 });
  const said = (what) => new RegExp(`^${what}: (\\S+)`, 'm').exec(text)[1];
  return { allocations: Number(said('calls to allocation functions')), peak: said('peak heap memory consumption') };
}

/** Runs a tray under heaptrack until `isDone`, and quits it. */
async function recordTray(name, home, runTime, isDone) {
  const file = path.join(folder, `heaptrack.${name}`);
  const tray = new Tray(executable, home, ['heaptrack', '--output', file], runTime);
  await isDone(tray);
  // Not by a signal, which would reach heaptrack and not the tray.
  tray.choose('Quit');
  await tray.ended;
  return reportOf(file);
}

async function pollsOf(name, times) {
  const state = makeState({ pollSeconds });
  const log = new EventLog(`${makeFolder('asked')}/events`);
  process.env.BENCH_LOG = log.path; // for the connector
  const wereMade = () => log.all().filter(({ event }) => event === 'asked').length >= times;
  return recordTray(name, `${state.home}/data`, state.run, async () => {
    while (!wereMade()) await pause(20);
  });
}

async function installation() {
  makeRuntime(path.join(trees, 'runtime'), '2.0.0', demo, process.execPath);
  const { server, baseUrl } = await publishAndServe(path.join(trees, 'runtime'), path.join(trees, 'out'));
  try {
    const home = path.join(trees, 'home');
    makeStateRoot(path.join(home, 'Orvanta'), '1.0.0', demo, process.execPath, baseUrl);
    return await recordTray('install', home, home, async (tray) => {
      await tray.line(/Runtime: Update available: 2\.0\.0/);
      const updated = tray.line(/Runtime: Updated to 2\.0\.0/);
      tray.choose('Update Desktop Connector');
      await updated;
    });
  } finally {
    server.kill();
  }
}

async function main() {
  const [few, many] = [await pollsOf('few-polls', fewPolls), await pollsOf('many-polls', manyPolls)];
  const each = (many.allocations - few.allocations) / (manyPolls - fewPolls);
  console.log(`one poll with its health record: ${each.toFixed(0)} allocations; peak of the heap after ${fewPolls} `
    + `and after ${manyPolls}: ${few.peak}, ${many.peak}`);
  const { allocations, peak } = await installation();
  console.log(`installation of 92 MB, from start to end: ${allocations} allocations, peak of the heap ${peak}`);
}

main();
