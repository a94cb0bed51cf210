// SPDX-License-Identifier: MIT
'use strict';

// What a person would type to install an archive, and pieces of it.

const { spawn } = require('child_process');
const { once } = require('events');

const START = 'echo; read -r; exec </dev/null >/dev/null';

/** Runs a script and answers how long it took, in milliseconds, without the shell's start. Rejects when it fails. */
async function timed(script, variables) {
  const child = spawn('bash', ['-euo', 'pipefail', '-c', `${START}\n${script}`], {
    env: { ...process.env, ...variables },
    stdio: ['pipe', 'pipe', 'inherit'],
  });
  await once(child.stdout, 'data');
  const began = performance.now();
  child.stdin.write('\n');
  return new Promise((resolve, reject) => {
    child.once('error', reject);
    child.once('exit', (status) => {
      if (status === 0) resolve(performance.now() - began);
      else reject(new Error(`a script ended with ${status}`));
    });
  });
}

/** Like the tray: the archive beside what comes out of it, removed when it has come out. */
const INSTALL = `
mkdir -p "$FOLDER/staging/unpacked" "$FOLDER/versions"
cd "$FOLDER/staging/unpacked"
digest=$(curl --silent --fail "$ADDRESS" | tee runtime.zip | openssl dgst -sha256 -r)
[[ $digest == "$DIGEST "* ]]
bsdtar -x -f runtime.zip
rm runtime.zip
cd ../..
mv staging/unpacked/runtime versions/2.0.0
rm -r staging`;

/** One takes the one large file, the other all the small ones; both have as many bytes to inflate. */
const TWO_EXTRACTORS = `
mkdir -p "$FOLDER"
bsdtar -x -f "$ARCHIVE" -C "$FOLDER" runtime/node-runtime &
bsdtar -x -f "$ARCHIVE" -C "$FOLDER" runtime/local-server
wait $!`;

const INFLATE = 'bsdtar -x -O -f "$ARCHIVE" >/dev/null';

const SETTLE = 'sync';

module.exports = { timed, INSTALL, TWO_EXTRACTORS, INFLATE, SETTLE };
