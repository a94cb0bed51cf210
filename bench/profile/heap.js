// SPDX-License-Identifier: MIT
'use strict';

// heap.js FOLDER: the heap of a tray that installs an archive, by heaptrack. To be run by trees.sh.

const path = require('path');
const { execFileSync } = require('child_process');
const { publishAndServe } = require('../install/channel');
const { makeRuntime } = require('../install/generated_runtime');
const { Tray, makeStateRoot } = require('../install/tray');

const demo = path.resolve(__dirname, '../../demo/local-server');
const trees = process.env.BENCH_TREES;
const executable = path.join(process.env.BENCH_BUILD, 'stage/bin/orvanta-tray');
const recorded = path.join(process.argv[2], 'heaptrack.install');

async function main() {
  makeRuntime(path.join(trees, 'runtime'), '2.0.0', demo, process.execPath);
  const { server, baseUrl } = await publishAndServe(path.join(trees, 'runtime'), path.join(trees, 'out'));
  try {
    const home = path.join(trees, 'home');
    makeStateRoot(path.join(home, 'Orvanta'), '1.0.0', demo, process.execPath, baseUrl);
    const tray = new Tray(executable, home, ['heaptrack', '--output', recorded]);
    await tray.line(/Runtime: Update available: 2\.0\.0/);
    const updated = tray.line(/Runtime: Updated to 2\.0\.0/);
    tray.choose('Update Desktop Connector');
    await updated;
    // Not by a signal, which would reach heaptrack and not the tray.
    tray.choose('Quit');
    await tray.ended;
  } finally {
    server.kill();
  }
  const [file] = execFileSync('bash', ['-c', 'ls "$0".*', recorded], { encoding: 'utf8' }).split('\n');
  const text = execFileSync('heaptrack_print', ['-f', file], { encoding: 'utf8', maxBuffer: 2 ** 28 });
  for (const line of text.split('\n').filter((one) => /^(calls to allocation functions|peak heap memory)/.test(one))) {
    console.log(`installation of 92 MB, ${line}`);
  }
}

main();
