// SPDX-License-Identifier: MIT
'use strict';

const fs = require('fs');
const path = require('path');

/** The exchanges with the host that can be made to misbehave. */
const exchanges = ['status', 'health', 'pair', 'logout', 'restart'];

/** The switches of a connector that behaves. README.md of the demo says what each one does. */
function defaultSwitches() {
  return {
    // What the status document says.
    state: null,
    document: {},
    statusDocument: null,
    // How exchanges are answered.
    statusCodes: {},
    location: null,
    hang: [],
    abort: [],
    drip: [],
    dripMs: 1000,
    mute: false,
    pairDelayMs: 0,
    // How the process lives.
    crashAtStart: null,
    listen: true,
    listenDelayMs: 0,
    announce: true,
    announceText: 'Desktop Connector running on http://127.0.0.1:{port}\n',
    announceStream: 'stdout',
    exitDelayMs: 0,
    journal: false,
  };
}

/** The defaults with what the user's or test's switch file says on top. Throws on a bad file. */
function loadSwitches(stateRoot) {
  const switches = defaultSwitches();
  const file = stateRoot && path.join(stateRoot, 'demo-switches.json');
  if (file && fs.existsSync(file)) applySwitches(switches, JSON.parse(fs.readFileSync(file, 'utf8')));
  return switches;
}

/** Sets the named switches. Throws, with nothing changed, if one is unknown or of another type. */
function applySwitches(switches, values) {
  const defaults = defaultSwitches();
  for (const [name, value] of Object.entries(values)) {
    if (!(name in defaults)) throw new Error(`There is no switch "${name}".`);
    if (!sameKind(defaults[name], value)) throw new Error(`Switch "${name}" cannot hold this value.`);
  }
  Object.assign(switches, values);
}

function sameKind(example, value) {
  if (example === null) return value === null || ['string', 'number'].includes(typeof value);
  if (Array.isArray(example)) {
    return Array.isArray(value) && value.every((entry) => exchanges.includes(entry));
  }
  return value !== null && typeof value === typeof example && !Array.isArray(value);
}

module.exports = { exchanges, defaultSwitches, loadSwitches, applySwitches };
