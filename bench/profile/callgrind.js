// SPDX-License-Identifier: MIT
'use strict';

// Programs under callgrind, and the instructions that it counted. Those of the kernel are not among them.

const fs = require('fs');
const path = require('path');

// valgrind does not know the descriptors by which the tray watches its children.
const processDescriptors = path.join(process.env.BENCH_BUILD, 'bench/profile/bench_process_descriptor.so');

/** The words before a command that has it counted into `file`, each thread apart: file-01 is the main one. */
function underCallgrind(file) {
  return ['env', `LD_PRELOAD=${processDescriptors}`, 'valgrind', '--quiet', '--tool=callgrind', '--separate-threads=yes',
    `--callgrind-out-file=${file}`];
}

// A line of costs belongs to the object named last, but for the one behind "calls=", which is that of the callee.
function countsIn(file) {
  const counts = new Map();
  const names = new Map();
  let object = '';
  let isOfCallee = false;
  for (const line of fs.readFileSync(file, 'utf8').split('\n')) {
    const own = /^ob=(\(\d+\))(?: (.*))?$/.exec(line);
    const callee = /^cob=(\(\d+\)) (.*)$/.exec(line);
    if (own && own[2]) names.set(own[1], path.basename(own[2]));
    if (callee) names.set(callee[1], path.basename(callee[2]));
    if (own) object = names.get(own[1]);
    if (/^[0-9+*-]/.test(line) && !isOfCallee) counts.set(object, (counts.get(object) || 0) + Number(line.split(' ')[1]));
    isOfCallee = line.startsWith('calls=');
  }
  return counts;
}

/** The instructions of each thread that was counted into `file`, the main one first, by objects: { all, objects }. */
function threadsOf(file) {
  const parts = fs.readdirSync(path.dirname(file)).filter((name) => name.startsWith(`${path.basename(file)}-`)).sort();
  return parts.map((part) => {
    const objects = countsIn(path.join(path.dirname(file), part));
    objects.delete(path.basename(processDescriptors));
    return { all: [...objects.values()].reduce((sum, count) => sum + count, 0), objects };
  });
}

module.exports = { underCallgrind, threadsOf };
