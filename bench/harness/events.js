// SPDX-License-Identifier: MIT
'use strict';

// The log that the programs of a measurement share: lines "EVENT PID NS TEXT", the time being that of
// CLOCK_MONOTONIC, as process.hrtime.bigint() tells it too.

const fs = require('fs');

const pause = (ms) => new Promise((resolve) => setTimeout(resolve, ms));

class EventLog {
  constructor(path) {
    this.path = path;
    fs.writeFileSync(path, '');
  }

  all() {
    return fs.readFileSync(this.path, 'utf8').split('\n').slice(0, -1).map((line) => {
      const [event, pid, time, ...text] = line.split(' ');
      return { event, pid: Number(pid), time: BigInt(time), text: text.join(' ') };
    });
  }

  // The first one after `since` that `fits`; looked for seldom enough not to be in the way.
  async next(fits, since = 0n, limitMs = 15000, what = `what fits ${fits}`) {
    const deadline = Date.now() + limitMs;
    while (Date.now() < deadline) {
      const found = this.all().find((entry) => entry.time > since && fits(entry));
      if (found) return found;
      await pause(20);
    }
    throw new Error(`there was not, within ${limitMs} ms, ${what}`);
  }

  event(name, since, limitMs) {
    return this.next(({ event }) => event === name, since, limitMs, `the event "${name}"`);
  }
}

function now() {
  return process.hrtime.bigint();
}

function milliseconds(from, to) {
  return Number(to - from) / 1e6;
}

module.exports = { EventLog, pause, now, milliseconds };
