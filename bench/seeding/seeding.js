// SPDX-License-Identifier: MIT
'use strict';

// seeding.js RESULTS_FILE: how long the tray takes to copy the runtime it ships with into a new store, beside
// cp. To be run by trees.sh.

const fs = require('fs');
const path = require('path');
const { alternate, holds, medianOf, record } = require('../harness/figures');
const { makeRuntime } = require('../install/generated_runtime');
const { SETTLE, timed } = require('../install/plain_tools');
const { Tray } = require('../install/tray');

const root = path.resolve(__dirname, '../..');
const trees = process.env.BENCH_TREES;
const prefix = path.join(trees, 'prefix');
const shipped = path.join(prefix, 'share/orvanta');
const executable = path.join(prefix, 'bin/orvanta-tray');

const ALLOWED = 1.05;

/** The built tray with a large runtime beside it. */
function layOut() {
  makeRuntime(shipped, '1.0.0', path.join(root, 'demo/local-server'), process.execPath);
  fs.mkdirSync(path.dirname(executable));
  fs.copyFileSync(path.join(process.env.BENCH_BUILD, 'stage/bin/orvanta-tray'), executable);
}

/** From the start of the tray until its connector is launched, which is after the store is there. */
async function start(home) {
  await timed(SETTLE);
  const began = performance.now();
  const tray = new Tray(executable, home);
  try {
    return (await tray.line(/Status: Starting\.\.\./)) - began;
  } finally {
    await tray.quit();
  }
}

/** What a start with a new store takes longer than the next one, which finds it seeded. */
async function seed(home) {
  const state = path.join(home, 'Orvanta');
  fs.mkdirSync(state, { recursive: true });
  const runtimeUpdates = { enabled: true, checkOnStartup: false, manifestBaseUrl: 'http://127.0.0.1:9' };
  fs.writeFileSync(path.join(state, 'config.json'), JSON.stringify({ runtimeUpdates }));
  const seeding = await start(home);
  if (!fs.existsSync(path.join(state, 'runtime/versions/1.0.0/local-server/server.js'))) {
    throw new Error('nothing was seeded');
  }
  return seeding - (await start(home));
}

function contenders() {
  const plain = (name, script) => async (round) => {
    await timed(SETTLE);
    return timed(script, { SHIPPED: shipped, FOLDER: path.join(trees, `${name}-${round}`) });
  };
  return [
    { name: 'Orvanta', role: 'ours', measure: (round) => seed(path.join(trees, `home-${round}`)) },
    { name: 'cp -a', role: 'peer', measure: plain('copy', 'exec cp -a --reflink=auto "$SHIPPED" "$FOLDER"') },
    { name: 'hard links', role: 'limit', measure: plain('links', 'exec cp -al "$SHIPPED" "$FOLDER"') },
  ];
}

async function main(file) {
  layOut();
  const { series, note } = await alternate(contenders());
  record(file, {
    figure: 'seeding',
    title: 'The shipped runtime of 190 MB in 4,002 files copied into a new store',
    unit: 'ms',
    series,
    bar: `at most ${ALLOWED.toFixed(2)} x cp -a --reflink=auto`,
    met: holds((ours, copy) => ours <= ALLOWED * copy, medianOf(series, 'ours'), medianOf(series, 'cp -a')),
    note: ['a start with a new store less a start with a seeded one', note].filter(Boolean).join('; '),
  });
}

main(process.argv[2]);
