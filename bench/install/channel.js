// SPDX-License-Identifier: MIT
'use strict';

// A release channel on this machine.

const fs = require('fs');
const path = require('path');
const { execFileSync, spawn } = require('child_process');

const root = path.resolve(__dirname, '../..');

/** Publishes the runtime as version 2.0.0 into the new folder `out`; who serves it, and where. */
async function publishAndServe(runtime, out) {
  fs.mkdirSync(out);
  const server = spawn(process.execPath, [path.join(root, 'demo/serve.js'), out, '0'], {
    stdio: ['ignore', 'pipe', 'inherit'],
  });
  const baseUrl = await new Promise((resolve) => {
    server.stdout.once('data', (line) => resolve(line.toString().trim()));
  });
  execFileSync(path.join(root, 'scripts/publish-runtime.sh'), [runtime, '2.0.0', out], {
    env: { ...process.env, BASE_URL: baseUrl },
  });
  return { server, baseUrl };
}

module.exports = { publishAndServe };
