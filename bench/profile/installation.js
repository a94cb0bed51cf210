// SPDX-License-Identifier: MIT
'use strict';

// One installation of 92 MB by a tray in the terminal, from its start to its end. To be run by trees.sh.

const path = require('path');
const { stage } = require('../harness/programs');
const { publishAndServe } = require('../install/channel');
const { makeRuntime } = require('../install/generated_runtime');
const { Tray, makeStateRoot } = require('../install/tray');

const demo = path.resolve(__dirname, '../../demo/local-server');
const trees = process.env.BENCH_TREES;
const limitMs = 600e3; // what counts instructions takes fifty times as long

/** Calls `use` with the address of a channel that has a newer version; its result. */
async function withChannel(use) {
  const [runtime, out] = ['runtime', 'out'].map((name) => path.join(trees, name));
  makeRuntime(runtime, '2.0.0', demo, process.execPath);
  const { server, baseUrl } = await publishAndServe(runtime, out);
  try {
    return await use(baseUrl);
  } finally {
    server.kill();
  }
}

/** Installs what is offered there, with a tray that runs behind the words of `command`. */
async function install(baseUrl, command) {
  const home = path.join(trees, `home-${path.basename(command[0])}`);
  makeStateRoot(path.join(home, 'Orvanta'), '1.0.0', demo, process.execPath, baseUrl);
  const tray = new Tray(`${stage}/bin/orvanta-tray`, home, command);
  await tray.line(/Runtime: Update available: 2\.0\.0/, limitMs);
  const updated = tray.line(/Runtime: Updated to 2\.0\.0/, limitMs);
  tray.choose('Update Desktop Connector');
  await updated;
  await tray.quitByMenu();
}

module.exports = { withChannel, install };
