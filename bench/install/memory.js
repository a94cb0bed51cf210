// SPDX-License-Identifier: MIT
'use strict';

// What processes hold, read from the kernel; in MiB.

const fs = require('fs');

/** A line of /proc/PID/status, for instance VmRSS or VmHWM; 0 when the process is gone. */
function held(pid, name) {
  try {
    const found = new RegExp(`^${name}:\\s+(\\d+) kB`, 'm').exec(fs.readFileSync(`/proc/${pid}/status`));
    return found ? Number(found[1]) / 1024 : 0;
  } catch {
    return 0;
  }
}

/** Forgets the largest resident size so far. */
function forgetPeak(pid) {
  fs.writeFileSync(`/proc/${pid}/clear_refs`, '5');
}

/** The processes that the threads of a process have started. */
function childrenOf(pid) {
  try {
    return fs.readdirSync(`/proc/${pid}/task`)
      .flatMap((thread) => fs.readFileSync(`/proc/${pid}/task/${thread}/children`, 'utf8').split(' '))
      .filter(Boolean);
  } catch {
    return [];
  }
}

/** Looks every few milliseconds at what `pids` answers, until stopped; the largest size seen. */
function watchPeaks(pids, intervalMs) {
  let peak = 0;
  const timer = setInterval(() => {
    for (const pid of pids()) peak = Math.max(peak, held(pid, 'VmHWM'));
  }, intervalMs);
  return () => {
    clearInterval(timer);
    return peak;
  };
}

module.exports = { held, forgetPeak, childrenOf, watchPeaks };
