// SPDX-License-Identifier: MIT
'use strict';

// store.js RESULTS_FILE: what a store with many versions costs: an update, and the pruning. By trees.sh.

const fs = require('fs');
const path = require('path');
const { execFileSync } = require('child_process');
const { setTimeout: sleep } = require('timers/promises');
const { alternate, holds, medianOf, record, rounds } = require('../harness/figures');
const { publishAndServe } = require('../install/channel');
const { SETTLE, timed } = require('../install/plain_tools');
const { Tray, makeStateRoot } = require('../install/tray');

const root = path.resolve(__dirname, '../..');
const demo = path.join(root, 'demo/local-server');
const trees = process.env.BENCH_TREES;
const executable = path.join(process.env.BENCH_BUILD, 'stage/bin/orvanta-tray');
const pruneCost = path.join(process.env.BENCH_BUILD, 'bench/store/bench_prune_cost');

const MANY = 100;
const NUMBERS = [0, 1, 10, MANY];
/** A click must not wait for longer than it would during an installation. */
const MOST_MS = 16;
const ALLOWED = 1.25;
const ALLOWED_MS = 2;
const IDLE_MS = 1000;

function publish() {
  const runtime = path.join(trees, 'runtime');
  makeStateRoot(path.join(trees, 'template'), '2.0.0', demo, process.execPath, '');
  fs.renameSync(path.join(trees, 'template/runtime/versions/2.0.0'), runtime);
  return publishAndServe(runtime, path.join(trees, 'out'));
}

function addVersions(state, count) {
  for (let i = 0; i < count; ++i) {
    fs.cpSync(path.join(state, 'runtime/versions/1.0.0'), path.join(state, `stale/0.${i}.0`), { recursive: true });
  }
}

/** They come between two polls, each of which would prune them. */
function showVersions(state, count) {
  for (let i = 0; i < count; ++i) {
    fs.renameSync(path.join(state, `stale/0.${i}.0`), path.join(state, `runtime/versions/0.${i}.0`));
  }
}

/** Checks and installs a small runtime beside so many stale versions; both durations. */
async function update(home, baseUrl, versions) {
  const state = path.join(home, 'Orvanta');
  makeStateRoot(state, '1.0.0', demo, process.execPath, baseUrl);
  addVersions(state, versions);
  await timed(SETTLE);
  const tray = new Tray(executable, home);
  try {
    await tray.line(/Runtime: Update available: 2\.0\.0/);
    await sleep(IDLE_MS);
    showVersions(state, versions);
    const [, checked] = [tray.line(/Runtime: Checking\.\.\./), tray.line(/Runtime: Update available: 2\.0\.0/)];
    const checkBegan = tray.choose('Check for Runtime Updates');
    const check = (await checked) - checkBegan;
    const installed = tray.line(/Status: Restarting\.\.\./);
    const began = tray.choose('Update Desktop Connector');
    const install = (await installed) - began;
    const left = fs.readdirSync(path.join(state, 'runtime/versions')).length;
    if (left !== versions + 2) throw new Error(`${left} versions instead of ${versions + 2}: a poll came between`);
    return { check, install };
  } finally {
    await tray.quit();
  }
}

async function recordUpdates(file, baseUrl) {
  const checks = new Map([[0, []], [MANY, []]]);
  const contender = (name, role, versions) => ({
    name,
    role,
    measure: async (round) => {
      const { check, install } = await update(path.join(trees, `home-${versions}-${round}`), baseUrl, versions);
      checks.get(versions).push(check);
      return install;
    },
  });
  const names = [`with ${MANY} versions more`, 'with one version'];
  const { series, note } = await alternate([contender(names[0], 'ours', MANY), contender(names[1], 'limit', 0)]);
  record(file, {
    figure: 'growth-update',
    title: 'A small update in a store with many versions',
    unit: 'ms',
    series,
    bar: `at most ${ALLOWED.toFixed(2)} x the same with one version`,
    met: holds((many, one) => many <= ALLOWED * one, medianOf(series, 'ours'), medianOf(series, 'limit')),
    note,
  });
  const checked = [
    { name: names[0], role: 'ours', values: checks.get(MANY) },
    { name: names[1], role: 'limit', values: checks.get(0) },
  ];
  record(file, {
    figure: 'growth-check',
    title: 'A check for updates in a store with many versions',
    unit: 'ms',
    series: checked,
    bar: `at most ${ALLOWED_MS} ms more than with one version`,
    met: holds((many, one) => many <= one + ALLOWED_MS, medianOf(checked, 'ours'), medianOf(checked, 'limit')),
  });
}

function recordPrune(file) {
  const lines = execFileSync(pruneCost, [rounds, ...NUMBERS].map(String), { encoding: 'utf8' }).trim().split('\n');
  const values = lines.map((line) => line.split('\t').map(Number));
  const series = NUMBERS.map((number) => ({
    name: number === 0 ? 'nothing to prune' : `${number} to prune`,
    role: number === 0 ? 'limit' : 'ours',
    values: values.filter(([versions]) => versions === number).map(([, milliseconds]) => milliseconds),
  }));
  record(file, {
    figure: 'growth-prune',
    title: 'How long the main thread stands still for a confirmation with superfluous versions',
    unit: 'ms',
    series,
    bar: `under ${MOST_MS} ms with ${MANY}`,
    met: holds((ours) => ours < MOST_MS, medianOf(series, `${MANY} to prune`)),
    note: 'a rename per version; the worker removes their files',
  });
}

async function main(file) {
  const { server, baseUrl } = await publish();
  try {
    await recordUpdates(file, baseUrl);
    recordPrune(file);
  } finally {
    server.kill();
  }
}

main(process.argv[2]);
