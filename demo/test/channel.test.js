// SPDX-License-Identifier: MIT
'use strict';

const assert = require('assert');
const { execFileSync, spawn, spawnSync } = require('child_process');
const fs = require('fs');
const http = require('http');
const os = require('os');
const path = require('path');
const { test } = require('node:test');

const demo = path.join(__dirname, '..');

function folderFor(t) {
  const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'demo-channel-'));
  t.after(() => fs.rmSync(folder, { recursive: true, force: true }));
  return folder;
}

/** Serves `folder` until the test is over. Resolves to the address that the server prints. */
function serve(t, folder) {
  const server = spawn(process.execPath, [path.join(demo, 'serve.js'), folder, '0']);
  t.after(() => server.kill());
  return new Promise((resolve) => {
    server.stdout.once('data', (line) => resolve(String(line).trim()));
  });
}

/** The reply to `target` exactly as written, which fetch would tidy up. */
function get(address, target) {
  const { hostname, port } = new URL(address);
  return new Promise((resolve, reject) => {
    http.get({ hostname, port, path: target, agent: false }, (reply) => {
      const pieces = [];
      reply.on('data', (piece) => pieces.push(piece));
      reply.on('end', () => resolve({ status: reply.statusCode, body: String(Buffer.concat(pieces)) }));
    }).on('error', reject);
  });
}

test('serves the files of its folder and nothing else', async (t) => {
  const folder = folderFor(t);
  fs.mkdirSync(path.join(folder, 'public', 'beta'), { recursive: true });
  fs.writeFileSync(path.join(folder, 'public', 'beta', 'manifest.json'), '{}');
  fs.writeFileSync(path.join(folder, 'secret'), 'x');
  const address = await serve(t, path.join(folder, 'public'));
  assert.deepStrictEqual(await get(address, '/beta/manifest.json'), { status: 200, body: '{}' });
  for (const target of ['/', '/beta', '/nothing', '/../secret', '/%2e%2e/secret', '/..%2fsecret', '/%ff',
    '/%00', '//', '/beta/../../secret']) {
    assert.strictEqual((await get(address, target)).status, 404, target);
  }
});

const skip = process.platform === 'darwin' && 'NOT RUN: the state root is fixed on macOS';

test('follows a channel and leaves it, keeping the other settings', { skip }, (t) => {
  const folder = folderFor(t);
  const file = path.join(folder, 'Orvanta', 'config.json');
  const follow = (...url) => {
    const env = { ...process.env, XDG_DATA_HOME: folder };
    execFileSync(process.execPath, [path.join(demo, 'follow.js'), ...url], { env });
    return JSON.parse(fs.readFileSync(file, 'utf8'));
  };
  const shipped = JSON.parse(fs.readFileSync(path.join(demo, 'local-server', 'config.installer.json')));
  const address = 'http://127.0.0.1:8700';
  assert.deepStrictEqual(follow(address), {
    ...shipped,
    runtimeUpdates: { ...shipped.runtimeUpdates, enabled: true, manifestBaseUrl: address },
  });
  fs.writeFileSync(file, '{"tray": {"httpTimeoutSeconds": 9}, "other": [1]}');
  assert.deepStrictEqual(follow(address), {
    tray: { httpTimeoutSeconds: 9 },
    other: [1],
    runtimeUpdates: { enabled: true, manifestBaseUrl: address },
  });
  assert.deepStrictEqual(follow().runtimeUpdates, { enabled: false, manifestBaseUrl: address });
});

test('leaves settings alone that it cannot read, in one sentence', { skip }, (t) => {
  const folder = folderFor(t);
  const file = path.join(folder, 'Orvanta', 'config.json');
  fs.mkdirSync(path.dirname(file));
  for (const settings of ['{"tray": ', '', 'null', '[]', '7']) {
    fs.writeFileSync(file, settings);
    const { status, stdout, stderr } = spawnSync(process.execPath, [path.join(demo, 'follow.js'), 'http://a.test'],
      { env: { ...process.env, XDG_DATA_HOME: folder }, encoding: 'utf8' });
    assert.strictEqual(status, 1, settings);
    assert.strictEqual(stdout, '');
    assert.match(stderr, /^\S*config\.json was left as it is: .*\.\n$/);
    assert.strictEqual(fs.readFileSync(file, 'utf8'), settings);
  }
});

test('makes runtimes that say their version, healthy or not', (t) => {
  const make = (...words) => spawnSync(path.join(demo, 'make-runtime.sh'), words, { encoding: 'utf8' });
  const out = path.join(folderFor(t), 'runtime');
  const script = () => fs.readFileSync(path.join(out, 'local-server', 'server.js'), 'utf8');
  assert.strictEqual(make('3.0.0', out, '--never-healthy').status, 0);
  assert.strictEqual(spawnSync(process.execPath, ['-e', script()]).status, 3);
  assert.strictEqual(make('2.0.0', out).status, 0);
  assert.strictEqual(script(), fs.readFileSync(path.join(demo, 'local-server', 'server.js'), 'utf8'));
  const metadata = JSON.parse(fs.readFileSync(path.join(out, 'local-server', 'runtime.json')));
  assert.deepStrictEqual(Object.keys(metadata), ['version', 'platform', 'arch']);
  assert.strictEqual(metadata.version, '2.0.0');
  fs.accessSync(path.join(out, 'node-runtime', 'node'), fs.constants.X_OK);
  for (const words of [[], ['1.0'], ['', out], ['1.0', out, '--healthy'], ['1.0', out, '--never-healthy', 'x']]) {
    const { status, stderr } = make(...words);
    assert.strictEqual(status, 2, words.join());
    assert.match(stderr, /make-runtime.sh VERSION OUT_DIR/);
  }
});
