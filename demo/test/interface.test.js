// SPDX-License-Identifier: MIT
'use strict';

const assert = require('assert');
const fs = require('fs');
const http = require('http');
const net = require('net');
const path = require('path');
const { test } = require('node:test');
const { withConnector, until } = require('./connector');

/** Listens on a free port until the test `t` is over, whatever its outcome. Resolves to the port. */
function listen(t, server) {
  t.after(() => server.close());
  return new Promise((resolve) => {
    server.listen(0, '127.0.0.1', () => resolve(server.address().port));
  });
}

test('has every file that a runtime must have', () => {
  const root = path.join(__dirname, '..', 'local-server');
  for (const name of ['server.js', 'config.installer.json', 'cloudflared', 'views/project-list.html',
    'public/index3.html']) {
    assert.ok(fs.existsSync(path.join(root, name)), name);
  }
});

test('announces the port it got in a single chunk', () => withConnector({}, async (connector) => {
  await connector.running();
  assert.deepStrictEqual(connector.chunks, [`Desktop Connector running on ${connector.base}\n`]);
}));

test('listens on the requested port', async (t) => {
  const probe = net.createServer();
  const port = await listen(t, probe);
  await new Promise((resolve) => { probe.close(resolve); });
  await withConnector({ environment: { PORT: String(port) } }, async (connector) => {
    await connector.running();
    assert.strictEqual(connector.port, String(port));
    assert.strictEqual((await connector.document()).localServer.requestedPort, port);
  });
});

test('a taken port is said on standard error and ends with status 1', async (t) => {
  const taken = net.createServer();
  const port = await listen(t, taken);
  await withConnector({ environment: { PORT: String(port) } }, async (connector) => {
    assert.deepStrictEqual(await connector.exited(), { status: 1, signal: null });
    await until(() => connector.output.stderr.includes(String(port)), 'the reason');
    assert.strictEqual(connector.output.stdout, '');
  });
});

test('the status document has every member in its type', () => withConnector({}, async (connector) => {
  await connector.running();
  assert.deepStrictEqual(await connector.document(), {
    state: 'NEEDS_PAIRING',
    mode: 'development',
    accessMode: 'local',
    workspaceId: null,
    hostname: null,
    webAppUrl: connector.base,
    localServer: {
      host: '127.0.0.1', port: Number(connector.port), baseUrl: connector.base, requestedPort: 0,
    },
    cloudflared: { running: false, healthy: false, restartCount: 0 },
  });
  assert.strictEqual((await connector.get('/api/ov/health')).status, 200);
}));

test('pairing survives a restart, unpairing ends it', () => withConnector({}, async (first) => {
  await first.running();
  assert.strictEqual((await first.post('/api/ov/pair/start')).status, 200);
  const paired = await first.document();
  assert.strictEqual(paired.state, 'RUNNING');
  assert.match(paired.workspaceId, /^demo-[0-9a-f]{6}$/);
  await first.succeededBy(async (second) => {
    assert.strictEqual((await second.document()).workspaceId, paired.workspaceId);
    assert.strictEqual((await second.post('/api/ov/logout?unpair=1')).status, 200);
    const { state, workspaceId } = await second.document();
    assert.deepStrictEqual({ state, workspaceId }, { state: 'NEEDS_PAIRING', workspaceId: null });
    assert.deepStrictEqual(fs.readdirSync(second.stateRoot), ['demo-connector.json']);
  });
}));

test('signing out without unpairing keeps the workspace', () => withConnector({}, async (connector) => {
  await connector.running();
  await connector.post('/api/ov/pair/start');
  const { workspaceId } = await connector.document();
  await connector.post('/api/ov/logout');
  const after = await connector.document();
  assert.strictEqual(after.state, 'NEEDS_LOGIN');
  assert.strictEqual(after.workspaceId, workspaceId);
}));

test('a late pairing is cancelled by signing out', () => withConnector(
  { switches: { pairDelayMs: 500 } }, async (connector) => {
    await connector.running();
    await connector.post('/api/ov/pair/start');
    assert.strictEqual((await connector.document()).state, 'NEEDS_PAIRING');
    await connector.post('/api/ov/logout?unpair=1');
    await new Promise((resolve) => setTimeout(resolve, 600));
    assert.strictEqual((await connector.document()).state, 'NEEDS_PAIRING');
    await connector.post('/api/ov/pair/start');
    await until(async () => (await connector.document()).state === 'RUNNING', 'the pairing');
  }));

test('an unreadable pairing file counts as unpaired', () => withConnector({}, async (first) => {
  await first.running();
  fs.writeFileSync(first.file('demo-connector.json'), '{"worksp');
  await first.succeededBy(async (second) => {
    assert.strictEqual((await second.document()).state, 'NEEDS_PAIRING');
    assert.match(second.output.stderr, /Pairing forgotten/);
  });
}));

for (const [command, status] of [['/api/server/restart', 202], ['/demo/restart', 202]]) {
  test(`${command} answers and then asks the host once`, async (t) => {
    const asked = [];
    const host = http.createServer((request, response) => {
      asked.push(`${request.method} ${request.url}`);
      response.writeHead(202).end('{"accepted":true}');
    });
    const url = `http://127.0.0.1:${await listen(t, host)}/restart`;
    await withConnector({ environment: { ORVANTA_HOST_CONTROL_URL: url } }, async (connector) => {
      await connector.running();
      assert.strictEqual((await connector.post(command)).status, status);
      await until(() => asked.length > 0, 'the request');
      await new Promise((resolve) => setTimeout(resolve, 50));
      assert.deepStrictEqual(asked, ['POST /restart']);
    });
  });
}

test('without a host a restart is refused', () => withConnector({}, async (connector) => {
  await connector.running();
  assert.strictEqual((await connector.post('/api/server/restart')).status, 503);
}));

test('SIGTERM ends it cleanly, open connections or not', () => withConnector({}, async (connector) => {
  await connector.running();
  await connector.post('/demo/hang?what=status');
  const held = connector.get('/api/ov/status').catch((error) => error);
  await until(() => connector.hasReceived('GET /api/ov/status'), 'the request');
  connector.child.kill('SIGTERM');
  assert.deepStrictEqual(await connector.exited(), { status: 0, signal: null });
  assert.ok(await held instanceof Error);
}));

test('serves its dashboard', () => withConnector({}, async (connector) => {
  await connector.running();
  for (const target of ['/', '/workspace/demo-123456', '/dashboard.js', '/dashboard.css']) {
    assert.strictEqual((await connector.get(target)).status, 200, target);
  }
  for (const target of ['/nothing', '/workspace/', '/..%2fserver.js', '/constructor']) {
    assert.strictEqual((await connector.get(target)).status, 404, target);
  }
}));

test('every button of the dashboard leads somewhere', () => withConnector({}, async (connector) => {
  await connector.running();
  const pages = await Promise.all(['/', '/workspace/w'].map(async (target) =>
    (await connector.get(target)).text()));
  const targets = [...pages.join().matchAll(/data-post="([^"]+)"/g)].map((match) => match[1]);
  assert.ok(targets.length > 15);
  const fatal = /crash|silent|close-output|hang/;
  for (const target of targets.filter((candidate) => !fatal.test(candidate))) {
    const { status } = await connector.post(target);
    assert.ok([200, 202, 500, 503].includes(status), `${target}: ${status}`);
  }
}));
