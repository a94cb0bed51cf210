// SPDX-License-Identifier: MIT
'use strict';

// The programs that are measured, each in a folder of its own in the world that this runs in.

const fs = require('fs');
const path = require('path');
const { spawn } = require('child_process');
const { EventLog, pause } = require('./events');

const build = process.env.BENCH_BUILD;
const stage = `${build}/stage`;
const connector = `${build}/bench/harness/bench_connector`;
const storeVersion = '9.0.0';
const requiredFiles = [...['server.js', 'config.installer.json', 'cloudflared', 'views/project-list.html',
  'public/index3.html'].map((file) => `local-server/${file}`), 'node-runtime/node'];

// Looked up in the folders of bench/, which name their programs bench_SOMETHING.
function own(folder, name) {
  return `${build}/bench/${folder}/bench_${name}`;
}

function makeFolder(name) {
  return fs.mkdtempSync(path.join(process.env.BENCH_WORLD, `${name}-`));
}

// A process that is told to end and waited for. Its output is thrown away unless `output` says otherwise.
class Program {
  constructor(command, { env = {}, output = 'ignore', cwd } = {}) {
    this.child = spawn(command[0], command.slice(1), {
      cwd, env: { ...process.env, ...env }, stdio: ['pipe', output, process.env.BENCH_VERBOSE ? 'inherit' : 'ignore'],
    });
    this.ended = new Promise((resolve) => {
      this.child.on('exit', resolve);
      this.child.on('error', (error) => {
        this.failure = error;
        resolve();
      });
    });
  }

  get pid() {
    return this.child.pid;
  }

  async end(signal = 'SIGTERM') {
    this.child.kill(signal);
    const late = setTimeout(() => this.child.kill('SIGKILL'), 5000);
    await this.ended;
    clearTimeout(late);
  }
}

// What a user's folders hold once the tray has run: settings, and a store with the connector that is
// measured with. `stale` more versions are there that nothing refers to, with the files that make a runtime
// complete and no others.
function makeState({ pollSeconds = 5, runtime = connector, server, stale = 0 } = {}) {
  const home = makeFolder('home');
  const root = `${home}/data/Orvanta`;
  const version = (name) => `${root}/runtime/versions/${name}`;
  const run = fs.mkdtempSync(`${process.env.XDG_RUNTIME_DIR}/run-`);
  const furnish = (name) => {
    const localServer = `${version(name)}/local-server`;
    fs.mkdirSync(`${version(name)}/node-runtime`, { recursive: true });
    fs.cpSync(server || `${stage}/share/orvanta/local-server`, localServer, { recursive: true });
    fs.writeFileSync(`${localServer}/runtime.json`,
      JSON.stringify({ version: name, platform: 'linux', arch: process.arch === 'x64' ? 'x86_64' : process.arch }));
    // Links, which cost no room: nothing writes into a runtime.
    fs.symlinkSync(runtime, `${version(name)}/node-runtime/node`);
  };
  const furnishBarely = (name) => {
    for (const file of requiredFiles) {
      fs.mkdirSync(path.dirname(`${version(name)}/${file}`), { recursive: true });
      fs.writeFileSync(`${version(name)}/${file}`, '', { mode: 0o755 });
    }
  };
  furnish(storeVersion);
  for (let number = 0; number < stale; ++number) furnishBarely(`1.${number}.0`);
  fs.writeFileSync(`${root}/config.json`, JSON.stringify({
    runtimeUpdates: { enabled: true, channel: 'beta', checkOnStartup: false, checkIntervalHours: 6 },
    tray: { statusPollIntervalSeconds: pollSeconds, httpTimeoutSeconds: 5, httpResourceTimeoutSeconds: 8 },
  }));
  fs.writeFileSync(`${root}/runtime/current.json`, JSON.stringify({
    currentVersion: storeVersion, channel: 'beta', updatedAt: '2026-01-01T00:00:00Z', pendingHealthCheck: false,
  }));
  return { home, run, root, version };
}

// The tray as it is installed, on the state that makeState() made. Its events are in `log`.
class Tray {
  constructor(state, { terminal = false, output, log, env: more = {} } = {}) {
    this.log = log || new EventLog(`${makeFolder('log')}/events`);
    const env = { BENCH_LOG: this.log.path, XDG_DATA_HOME: `${state.home}/data`, XDG_RUNTIME_DIR: state.run, ...more };
    const command = [own('harness', 'launch'), `${stage}/bin/orvanta-tray`, ...(terminal ? ['--terminal'] : [])];
    this.program = new Program(command, { env, output });
  }

  get pid() {
    return this.program.pid;
  }

  async end() {
    await this.program.end();
    await pause(50);
  }
}

// The tray in a terminal, with someone who notes in its log when it prints; nobody stands between the two.
function startInTerminal(state, log = new EventLog(`${makeFolder('log')}/events`)) {
  const stamp = new Program([own('harness', 'stamp')], { env: { BENCH_LOG: log.path } });
  const tray = new Tray(state, { terminal: true, output: stamp.child.stdin, log });
  stamp.child.stdin.destroy();
  return tray;
}

// A panel without a face, whose events go to the log of `tray` when it is given one.
async function startWatcher(log) {
  const watcher = new Program([own('harness', 'watcher')], { env: { BENCH_LOG: log.path }, output: 'pipe' });
  await new Promise((resolve, reject) => {
    watcher.child.stdout.once('data', resolve);
    watcher.ended.then(() => reject(new Error('the watcher of the session bus could not be started')));
  });
  return watcher;
}

module.exports = { build, stage, connector, storeVersion, own, makeFolder, makeState, Program, Tray, startInTerminal, startWatcher };
