// SPDX-License-Identifier: MIT
'use strict';

const { spawn } = require('child_process');

/** How this process ends, and what it leaves behind. */
class Life {
  #switches;

  constructor(switches) {
    this.#switches = switches;
  }

  /** From now on a request to end means a clean exit, late or never as the switches say. */
  obeySignals() {
    for (const signal of ['SIGTERM', 'SIGINT', 'SIGHUP']) process.on(signal, () => this.#leave());
  }

  /** Ends at once: a number is an exit status, a text is a signal. */
  end(how) {
    if (typeof how === 'number') process.exit(how);
    process.removeAllListeners(how);
    process.kill(process.pid, how);
  }

  /** Starts a process of its own session that holds both output pipes for `seconds`. Returns its id. */
  leaveGrandchild(seconds) {
    const wait = `setTimeout(() => {}, ${seconds * 1000})`;
    const options = { detached: true, stdio: ['ignore', 'inherit', 'inherit'] };
    const child = spawn(process.execPath, ['-e', wait], options);
    child.unref();
    return child.pid;
  }

  #leave() {
    const delay = this.#switches.exitDelayMs;
    if (delay < 0) return;
    if (delay === 0) process.exit(0);
    setTimeout(() => process.exit(0), delay);
  }
}

module.exports = { Life };
