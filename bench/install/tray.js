// SPDX-License-Identifier: MIT
'use strict';

// The built tray with its menu in a pipe, in a home of its own whose store is already seeded.

const fs = require('fs');
const path = require('path');
const { spawn } = require('child_process');

const LIMIT_MS = 60e3;

/** A state root that has run a runtime `version`, the demo, and takes its updates from `baseUrl`. */
function makeStateRoot(folder, version, demo, node, baseUrl) {
  const root = path.join(folder, 'runtime/versions', version);
  fs.mkdirSync(path.join(root, 'node-runtime'), { recursive: true });
  fs.cpSync(demo, path.join(root, 'local-server'), { recursive: true });
  fs.writeFileSync(path.join(root, 'node-runtime/node'), `#!/bin/sh\nexec '${node}' "$@"\n`, {
    mode: 0o755,
  });
  const record = { currentVersion: version, channel: 'beta', pendingHealthCheck: false };
  fs.writeFileSync(path.join(folder, 'runtime/current.json'), JSON.stringify(record));
  const runtimeUpdates = { enabled: true, channel: 'beta', manifestBaseUrl: baseUrl };
  fs.writeFileSync(path.join(folder, 'config.json'), JSON.stringify({ runtimeUpdates }));
}

class Tray {
  /** Starts it; `command` is run with the executable and its option behind it. */
  constructor(executable, home, command = [], runTime = home) {
    const [program, ...options] = [...command, executable, '--terminal'];
    this.waiting = [];
    this.rest = '';
    this.child = spawn(program, options, {
      env: { ...process.env, XDG_DATA_HOME: home, XDG_RUNTIME_DIR: runTime },
      stdio: ['pipe', 'pipe', 'inherit'],
    });
    this.child.stdout.on('data', (chunk) => this.take(chunk.toString()));
    this.ended = new Promise((resolve) => this.child.once('exit', resolve));
  }

  get pid() {
    return this.child.pid;
  }

  take(text) {
    const lines = (this.rest + text).split('\n');
    this.rest = lines.pop();
    for (const line of lines) {
      const [wanted] = this.waiting;
      if (wanted && wanted.pattern.test(line)) {
        this.waiting.shift();
        wanted.resolve(performance.now());
      }
    }
  }

  /** When the next line that matches was read. Waits are served in the order they were made in. */
  line(pattern, limitMs = LIMIT_MS) {
    return new Promise((resolve, reject) => {
      const timer = setTimeout(() => reject(new Error(`the tray never said ${pattern}`)), limitMs);
      this.waiting.push({
        pattern,
        resolve: (when) => {
          clearTimeout(timer);
          resolve(when);
        },
      });
    });
  }

  /** Chooses an entry of the menu; when it was chosen. */
  choose(entry) {
    this.child.stdin.write(`${entry}\n`);
    return performance.now();
  }

  /** Also reaches a tray that runs behind another program, which would keep a signal to itself. */
  async quitByMenu() {
    this.choose('Quit');
    await this.ended;
  }

  async quit() {
    this.child.kill('SIGTERM');
    await this.ended;
  }
}

module.exports = { makeStateRoot, Tray };
