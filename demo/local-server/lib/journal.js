// SPDX-License-Identifier: MIT
'use strict';

const fs = require('fs');
const path = require('path');

/**
 * Counts the requests of this process. With the switch `journal` it also appends each start, each port
 * opened and each request to demo-journal.jsonl in the state root, so that they can be read across restarts.
 */
class Journal {
  #file;
  #switches;
  #counts = {};

  constructor(stateRoot, switches) {
    this.#file = stateRoot && path.join(stateRoot, 'demo-journal.jsonl');
    this.#switches = switches;
  }

  /** How often each "METHOD /path?query" came, the switch board's own requests left out. */
  get counts() {
    return { ...this.#counts };
  }

  started(environment) {
    this.#append({ event: 'start', environment });
  }

  listening(port) {
    this.#append({ event: 'listening', port });
  }

  request(method, target) {
    if (target.startsWith('/demo/')) return;
    const name = `${method} ${target}`;
    this.#counts[name] = (this.#counts[name] || 0) + 1;
    this.#append({ event: 'request', request: name });
  }

  #append(entry) {
    if (!this.#file || !this.#switches.journal) return;
    const line = JSON.stringify({ time: new Date().toISOString(), pid: process.pid, ...entry });
    fs.appendFileSync(this.#file, `${line}\n`);
  }
}

module.exports = { Journal };
