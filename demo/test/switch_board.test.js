// SPDX-License-Identifier: MIT
'use strict';

const assert = require('assert');
const fs = require('fs');
const { test } = require('node:test');
const { withConnector, until } = require('./connector');

const announcement = /^Desktop Connector running on [^\n]+\n/;

/** Runs `body` with a connector that is already listening. */
function withRunning(name, body, options = {}) {
  test(name, () => withConnector(options, async (connector) => body(await connector.running())));
}

withRunning('state and document change what the status says', async (connector) => {
  await connector.post('/demo/state?value=NEEDS_LOGIN');
  assert.strictEqual((await connector.document()).state, 'NEEDS_LOGIN');
  await connector.post('/demo/set', { body: '{"document":{"mode":"production","cloudflared":null}}' });
  const document = await connector.document();
  assert.strictEqual(document.mode, 'production');
  assert.strictEqual(document.cloudflared, null);
  await connector.post('/demo/reset');
  assert.strictEqual((await connector.document()).state, 'NEEDS_PAIRING');
});

withRunning('the status document can be any bytes', async (connector) => {
  const bytes = Buffer.from([0x7b, 0xff, 0x00, 0x7d]);
  await connector.post('/demo/status-document', { body: bytes });
  const reply = await connector.get('/api/ov/status');
  assert.deepStrictEqual(Buffer.from(await reply.arrayBuffer()), bytes);
  await connector.post('/demo/status-document');
  assert.strictEqual((await connector.document()).state, 'NEEDS_PAIRING');
});

withRunning('status codes, with a place to go', async (connector) => {
  await connector.post('/demo/status-code?value=302&what=pair&location=/elsewhere');
  const reply = await connector.post('/api/ov/pair/start');
  assert.strictEqual(reply.status, 302);
  assert.strictEqual(reply.headers.get('location'), '/elsewhere');
  assert.strictEqual((await connector.document()).state, 'NEEDS_PAIRING');
  await connector.post('/demo/status-code?value=500&what=all');
  for (const target of ['/api/ov/status', '/api/ov/health']) {
    assert.strictEqual((await connector.get(target)).status, 500);
  }
  await connector.post('/demo/status-code?value=0&what=all');
  assert.strictEqual((await connector.get('/api/ov/health')).status, 200);
  await connector.post('/demo/refuse-restart');
  assert.strictEqual((await connector.post('/api/server/restart')).status, 500);
  await connector.post('/demo/refuse-restart?on=0');
  assert.strictEqual((await connector.post('/api/server/restart')).status, 503);
});

withRunning('a hanging exchange is answered when the switch goes off', async (connector) => {
  await connector.post('/demo/hang?what=status');
  let answered = false;
  const held = connector.get('/api/ov/status').then((reply) => { answered = true; return reply; });
  await until(() => connector.hasReceived('GET /api/ov/status'), 'the request');
  assert.strictEqual((await connector.get('/api/ov/health')).status, 200);
  assert.strictEqual(answered, false);
  await connector.post('/demo/hang?what=status&on=0');
  assert.strictEqual((await held).status, 200);
});

withRunning('an aborted exchange closes the connection without a reply', async (connector) => {
  await connector.post('/demo/abort?what=pair');
  await assert.rejects(connector.post('/api/ov/pair/start'));
  const counts = await (await connector.get('/demo/requests')).json();
  assert.strictEqual(counts['POST /api/ov/pair/start'], 1);
});

withRunning('a dripping reply arrives whole and late', async (connector) => {
  await connector.post('/demo/drip?what=health&ms=10');
  const start = Date.now();
  assert.deepStrictEqual(await (await connector.get('/api/ov/health')).json(), { healthy: true });
  assert.ok(Date.now() - start >= 150);
});

withRunning('requests are counted with their query, the board not', async (connector) => {
  await connector.post('/api/ov/logout?unpair=1');
  await connector.get('/api/ov/status');
  await connector.get('/api/ov/status');
  assert.deepStrictEqual(await (await connector.get('/demo/requests')).json(), {
    'POST /api/ov/logout?unpair=1': 1,
    'GET /api/ov/status': 2,
  });
});

withRunning('tells its environment', async (connector) => {
  assert.deepStrictEqual(await (await connector.get('/demo/environment')).json(), {
    pid: connector.child.pid,
    version: null,
    HOST: '127.0.0.1',
    ORVANTA_MARK: 'x y',
    ORVANTA_STATE_ROOT: connector.stateRoot,
    PORT: '0',
  });
}, { environment: { ORVANTA_MARK: 'x y' } });

withRunning('crashes with a status', async (connector) => {
  await connector.post('/demo/crash?code=3');
  assert.deepStrictEqual(await connector.exited(), { status: 3, signal: null });
});

for (const signal of ['SIGKILL', 'SIGTERM', 'SIGSEGV']) {
  withRunning(`dies by ${signal}`, async (connector) => {
    await connector.post(`/demo/crash?signal=${signal}`);
    assert.deepStrictEqual(await connector.exited(), { status: null, signal });
  });
}

withRunning('closes its port for a while', async (connector) => {
  await connector.post('/demo/silent?ms=200');
  await until(() => connector.get('/api/ov/health').then(() => false, () => true), 'silence');
  await until(() => connector.output.stdout.split('\n').length === 3, 'a second announcement');
  assert.strictEqual((await connector.get('/api/ov/health')).status, 200);
});

withRunning('lives on with a closed port', async (connector) => {
  await connector.post('/demo/hang');
  const open = connector.get('/api/ov/status').catch((error) => error.name);
  await until(() => connector.hasReceived('GET /api/ov/status'), 'the request');
  await connector.post('/demo/silent');
  assert.strictEqual(await open, 'TypeError');
  await new Promise((resolve) => setTimeout(resolve, 100));
  await assert.rejects(connector.get('/api/ov/health'));
  assert.strictEqual(connector.exit, undefined);
  connector.child.kill('SIGTERM');
  assert.deepStrictEqual(await connector.exited(), { status: 0, signal: null });
});

withRunning('goes mute for a while with its port open', async (connector) => {
  await connector.post('/demo/silent?how=mute&ms=1000');
  await assert.rejects(connector.get('/api/ov/health', { signal: AbortSignal.timeout(100) }));
  const answers = () => connector.get('/api/ov/health', { signal: AbortSignal.timeout(500) })
    .then((reply) => reply.ok, () => false);
  await until(answers, 'an answer');
});

withRunning('prints raw bytes in pieces, on either stream', async (connector) => {
  await connector.post('/demo/print?chunk=3&pause=150', { body: 'PORT:\n' });
  await connector.post('/demo/print?repeat=3', { body: 'more\n' });
  await until(() => connector.output.stdout.endsWith('PORT:\nmore\nmore\nmore\n'), 'the text');
  assert.deepStrictEqual(connector.chunks.slice(1, 3), ['POR', 'T:\n']);
  await connector.post('/demo/print?stream=stderr', { body: 'oops' });
  await until(() => connector.output.stderr === 'oops', 'the error text');
  assert.strictEqual((await connector.post('/demo/print?stream=nowhere')).status, 400);
});

withRunning('closes its output and lives on', async (connector) => {
  await connector.post('/demo/close-output');
  await until(() => connector.ended.stdout && connector.ended.stderr, 'the end of both streams');
  await connector.post('/demo/print', { body: 'lost' });
  assert.strictEqual((await connector.get('/api/ov/health')).status, 200);
  assert.strictEqual(connector.exit, undefined);
  assert.match(connector.output.stdout, announcement);
});

withRunning('leaves a grandchild that keeps the pipes open', async (connector) => {
  const { pid } = await (await connector.post('/demo/grandchild?seconds=30')).json();
  await connector.post('/demo/crash?code=0');
  await connector.exited();
  await new Promise((resolve) => setTimeout(resolve, 100));
  assert.strictEqual(connector.ended.stdout, false);
  process.kill(pid, 'SIGKILL');
  await until(() => connector.ended.stdout && connector.ended.stderr, 'the end of both streams');
});

withRunning('leaves late when told so', async (connector) => {
  await connector.post('/demo/exit-delay?ms=200');
  const start = Date.now();
  connector.child.kill('SIGTERM');
  assert.deepStrictEqual(await connector.exited(), { status: 0, signal: null });
  assert.ok(Date.now() - start >= 190);
});

withRunning('ignores SIGTERM when told so', async (connector) => {
  await connector.post('/demo/exit-delay?ms=-1');
  connector.child.kill('SIGTERM');
  await new Promise((resolve) => setTimeout(resolve, 100));
  assert.strictEqual((await connector.get('/api/ov/health')).status, 200);
});

withRunning('a page of another site cannot press a switch', async (connector) => {
  const headers = { Origin: 'http://elsewhere.example' };
  assert.strictEqual((await connector.post('/demo/crash', { headers })).status, 403);
  const own = { Origin: connector.base };
  assert.strictEqual((await connector.post('/demo/reset', { headers: own })).status, 200);
});

withRunning('wrong switches are refused and change nothing', async (connector) => {
  const before = await (await connector.get('/demo/switches')).text();
  for (const target of ['/demo/hang?what=tea', '/demo/exit-delay?ms=soon', '/demo/nothing']) {
    assert.ok((await connector.post(target)).status >= 400, target);
  }
  for (const body of ['{"hang":["tea"]}', '{"tea":1}', '{"announce":1}', '{"exitDelayMs":null}', 'junk']) {
    assert.strictEqual((await connector.post('/demo/set', { body })).status, 400, body);
  }
  assert.strictEqual(await (await connector.get('/demo/switches')).text(), before);
});

test('crashes at start', () => withConnector({ switches: { crashAtStart: 3 } }, async (connector) => {
  assert.deepStrictEqual(await connector.exited(), { status: 3, signal: null });
  assert.strictEqual(connector.output.stdout, '');
}));

withRunning('announces nothing, but listens', async (first) => {
  const { port } = first;
  fs.writeFileSync(first.file('demo-switches.json'), '{"announce":false}');
  first.child.kill();
  await first.exited();
  const options = { stateRoot: first.stateRoot, environment: { PORT: port } };
  await withConnector(options, async (connector) => {
    connector.base = `http://127.0.0.1:${port}`;
    await until(() => connector.get('/api/ov/health').then((reply) => reply.ok, () => false), 'the port');
    assert.strictEqual(connector.output.stdout, '');
  });
});

test('announces another way', () => withConnector(
  { switches: { announceText: 'PORT: {port}\n', announceStream: 'stderr' } }, async (connector) => {
    await until(() => /^PORT: \d+\n$/.test(connector.output.stderr), 'the announcement');
    assert.strictEqual(connector.output.stdout, '');
  }));

test('listens late', async () => {
  const start = Date.now();
  await withConnector({ switches: { listenDelayMs: 300 } }, async (connector) => {
    await connector.running();
    assert.ok(Date.now() - start >= 290);
  });
});

const deaf = { switches: { listen: false } };
test('does not listen at all, and lives', () => withConnector(deaf, async (connector) => {
  await new Promise((resolve) => setTimeout(resolve, 300));
  assert.strictEqual(connector.exit, undefined);
  assert.strictEqual(connector.output.stdout, '');
}));

test('a bad switch file is said and ends with status 2', () => withConnector(
  { switches: { crashAtSart: 3 } }, async (connector) => {
    assert.deepStrictEqual(await connector.exited(), { status: 2, signal: null });
    await until(() => /crashAtSart/.test(connector.output.stderr), 'the reason');
  }));

withRunning('the journal outlives the process', async (first) => {
  await first.post('/api/ov/pair/start');
  await first.post('/demo/state');
  await first.succeededBy(async (second) => {
    const text = fs.readFileSync(second.file('demo-journal.jsonl'), 'utf8');
    const lines = text.trim().split('\n').map(JSON.parse);
    assert.deepStrictEqual(
      lines.map(({ event, port, request, pid }) => [event, port ?? request, pid]), [
        ['start', undefined, first.child.pid],
        ['listening', Number(first.port), first.child.pid],
        ['request', 'POST /api/ov/pair/start', first.child.pid],
        ['start', undefined, second.child.pid],
        ['listening', Number(second.port), second.child.pid],
      ]);
    assert.strictEqual(lines[0].environment.PORT, '0');
  });
}, { switches: { journal: true } });
