// SPDX-License-Identifier: MIT
'use strict';

// Copies of a program's libraries for it alone, but for those that the desktop has in use itself. What a
// program shares with others counts for less, so what else happens to run on a machine would decide between
// one figure and half of it.

const fs = require('fs');
const path = require('path');
const { makeFolder } = require('./programs');

function mappedLibraries(pids) {
  const files = pids.flatMap((pid) => fs.readFileSync(`/proc/${pid}/maps`, 'utf8').split('\n')
    .map((line) => line.split(/\s+/).slice(5).join(' ')));
  return new Set(files.filter((file) => /^\/(usr\/)?lib\/[^/]+\/[^/]+\.so[^/]*$/.test(file) && !/\/ld-linux/.test(file)));
}

// The folder of the copies of what `pids` have in use and `desktop` has not, under every name that each library has beside itself.
function copyLibraries(pids, desktop) {
  const folder = makeFolder('libraries');
  const common = mappedLibraries(desktop);
  const libraries = new Set([...mappedLibraries(pids)].filter((file) => !common.has(file)));
  for (const file of libraries) fs.copyFileSync(file, `${folder}/${path.basename(file)}`);
  for (const directory of new Set([...libraries].map((file) => path.dirname(file)))) {
    for (const entry of fs.readdirSync(directory, { withFileTypes: true }).filter((one) => one.isSymbolicLink())) {
      const link = `${folder}/${entry.name}`;
      const target = fs.existsSync(`${directory}/${entry.name}`) ? fs.realpathSync(`${directory}/${entry.name}`) : '';
      if (libraries.has(target) && !fs.existsSync(link)) fs.symlinkSync(path.basename(target), link);
    }
  }
  return folder;
}

// What `start` answers; the processes that it starts find their libraries in `folder`.
function startWith(folder, start) {
  const before = process.env.LD_LIBRARY_PATH;
  process.env.LD_LIBRARY_PATH = folder;
  try {
    return start();
  } finally {
    if (before === undefined) delete process.env.LD_LIBRARY_PATH;
    else process.env.LD_LIBRARY_PATH = before;
  }
}

module.exports = { copyLibraries, startWith };
