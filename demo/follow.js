// SPDX-License-Identifier: MIT
'use strict';

// follow.js [URL]: lets the tray take its runtimes from the channel at URL; without URL it takes none
// any more. Changes config.json in the state root; the tray reads it afresh at each check.

const fs = require('fs');
const os = require('os');
const path = require('path');

const template = path.join(__dirname, 'local-server', 'config.installer.json');

function stateRoot() {
  const mac = path.join(os.homedir(), 'Library', 'Application Support');
  const linux = path.isAbsolute(process.env.XDG_DATA_HOME || '')
    ? process.env.XDG_DATA_HOME
    : path.join(os.homedir(), '.local', 'share');
  return path.join(process.platform === 'darwin' ? mac : linux, 'Orvanta');
}

function main([url]) {
  const file = path.join(stateRoot(), 'config.json');
  const config = JSON.parse(fs.readFileSync(fs.existsSync(file) ? file : template, 'utf8'));
  const channel = url ? { enabled: true, manifestBaseUrl: url } : { enabled: false };
  config.runtimeUpdates = { ...config.runtimeUpdates, ...channel };
  fs.mkdirSync(path.dirname(file), { recursive: true });
  fs.writeFileSync(file, `${JSON.stringify(config, null, 2)}\n`);
  process.stdout.write(`${file}: ${url ? `runtimes from ${url}` : 'no runtime updates'}\n`);
}

main(process.argv.slice(2));
