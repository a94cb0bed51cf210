// SPDX-License-Identifier: MIT
'use strict';

// Entry of the demo connector: reads what the host tells through the environment, opens the port,
// announces it, and stays until it is told to go.

const { readSettings } = require('./lib/settings');
const { loadSwitches } = require('./lib/switches');
const { Output } = require('./lib/output');
const { Pairing } = require('./lib/pairing');
const { Journal } = require('./lib/journal');
const { HostControl } = require('./lib/host_control');
const { Listener } = require('./lib/listener');
const { Router } = require('./lib/router');
const { Life } = require('./lib/life');
const connectorApi = require('./lib/connector_api');
const switchBoard = require('./lib/switch_board');
const pages = require('./lib/pages');

function main() {
  const output = new Output();
  const settings = readSettings(process.env);
  const switches = loadSwitches(settings.stateRoot);
  const life = new Life(switches);
  life.obeySignals();

  const journal = new Journal(settings.stateRoot, switches);
  journal.started(settings.environment);
  if (switches.crashAtStart !== null) life.end(switches.crashAtStart);

  const pairing = new Pairing(settings.stateRoot, output);
  const hostControl = new HostControl(settings.hostControlUrl, output);
  const router = new Router(switches, journal);
  const listener = new Listener(settings, switches, output, journal, (...exchange) =>
    router.handle(...exchange));
  const parts = { settings, switches, output, journal, pairing, hostControl, listener, life };
  router.add(connectorApi.routes(parts));
  router.add(switchBoard.routes(parts));
  router.addFallback(pages.answer);
  listener.start();
}

try {
  main();
} catch (error) {
  process.stderr.write(`Demo connector cannot start: ${error.message}\n`);
  process.exit(2);
}
