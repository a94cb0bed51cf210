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

/** The settings in `file`, an object; throws an error whose message says what is wrong with them. */
function settingsIn(file) {
  const config = JSON.parse(fs.readFileSync(file, 'utf8'));
  if (config === null || typeof config !== 'object' || Array.isArray(config)) {
    throw new Error('it holds no JSON object');
  }
  return config;
}

function follow(file, url) {
  const config = settingsIn(fs.existsSync(file) ? file : template);
  const channel = url ? { enabled: true, manifestBaseUrl: url } : { enabled: false };
  config.runtimeUpdates = { ...config.runtimeUpdates, ...channel };
  fs.mkdirSync(path.dirname(file), { recursive: true });
  fs.writeFileSync(file, `${JSON.stringify(config, null, 2)}\n`);
  process.stdout.write(`${file}: ${url ? `runtimes from ${url}` : 'no runtime updates'}\n`);
}

function main([url]) {
  const file = path.join(stateRoot(), 'config.json');
  try {
    follow(file, url);
  } catch (error) {
    process.stderr.write(`${file} was left as it is: ${error.message}.\n`);
    process.exit(1);
  }
}

main(process.argv.slice(2));
