// SPDX-License-Identifier: MIT
'use strict';

const { spawn } = require('child_process');
const fs = require('fs');
const os = require('os');
const path = require('path');

const entry = path.join(__dirname, '..', 'local-server', 'server.js');
const limitMs = 10000;

/** A demo connector as a child process, the way a host starts it, with a state root of its own. */
class Connector {
  constructor({ switches, stateRoot, environment } = {}) {
    this.stateRoot = stateRoot || fs.mkdtempSync(path.join(os.tmpdir(), 'demo-connector-'));
    if (switches) fs.writeFileSync(this.file('demo-switches.json'), JSON.stringify(switches));
    this.output = { stdout: '', stderr: '' };
    this.chunks = [];
    this.ended = { stdout: false, stderr: false };
    this.#start(environment);
  }

  #start(environment) {
    const own = /^(PORT|HOST|ORVANTA_.*)$/;
    const inherited = Object.entries(process.env).filter(([name]) => !own.test(name));
    const told = { PORT: '0', HOST: '127.0.0.1', ORVANTA_STATE_ROOT: this.stateRoot };
    const env = { ...Object.fromEntries(inherited), ...told, ...environment };
    this.child = spawn(process.execPath, [entry], { env, stdio: ['ignore', 'pipe', 'pipe'] });
    for (const stream of ['stdout', 'stderr']) {
      this.child[stream].on('data', (data) => {
        this.output[stream] += data;
        this.chunks.push(String(data));
      });
      this.child[stream].on('end', () => { this.ended[stream] = true; });
    }
    this.child.on('exit', (status, signal) => { this.exit = { status, signal }; });
  }

  file(name) {
    return path.join(this.stateRoot, name);
  }

  /** Waits for the announcement; the base address is known from then on. */
  async running() {
    const pattern = /Desktop Connector running on (http:\/\/127\.0\.0\.1:(\d+))\n/;
    await until(() => pattern.test(this.output.stdout) || this.exit, 'the announcement');
    const match = pattern.exec(this.output.stdout);
    if (!match) throw new Error(`exited before announcing: ${this.output.stderr}`);
    [, this.base, this.port] = match;
    return this;
  }

  async exited() {
    await until(() => this.exit, 'the exit');
    return this.exit;
  }

  get(target, options = {}) {
    const signal = AbortSignal.timeout(limitMs);
    return fetch(this.base + target, { signal, redirect: 'manual', ...options });
  }

  post(target, options = {}) {
    return this.get(target, { method: 'POST', ...options });
  }

  async document() {
    return (await this.get('/api/ov/status')).json();
  }

  async hasReceived(request) {
    return request in (await (await this.get('/demo/requests')).json());
  }

  /** Ends this connector and runs `body` with the next one on the same state root. */
  async succeededBy(body) {
    this.child.kill('SIGTERM');
    await this.exited();
    await withConnector({ stateRoot: this.stateRoot }, async (next) => body(await next.running()));
  }

  async dispose() {
    if (!this.exit) this.child.kill('SIGKILL');
    await this.exited();
    fs.rmSync(this.stateRoot, { recursive: true, force: true });
  }
}

async function until(condition, what) {
  const deadline = Date.now() + limitMs;
  while (!(await condition())) {
    if (Date.now() > deadline) throw new Error(`Waited in vain for ${what}.`);
    await new Promise((resolve) => setTimeout(resolve, 5));
  }
}

/** Runs `body` with a new connector and removes what is left of it. */
async function withConnector(options, body) {
  const connector = new Connector(options);
  try {
    await body(connector);
  } finally {
    await connector.dispose();
  }
}

module.exports = { withConnector, until };
