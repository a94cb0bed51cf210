// SPDX-License-Identifier: MIT
'use strict';

const { json, failure } = require('./reply');
const { exchanges, defaultSwitches, applySwitches } = require('./switches');
const { printPieces } = require('./pieces');
const { runtimeVersion } = require('./runtime_version');

/** Everything that can be done to this connector from outside to see how its host bears it. */
function routes(parts) {
  return { ...views(parts), ...documentSwitches(parts), ...exchangeSwitches(parts), ...deeds(parts) };
}

function views({ settings, switches, journal }) {
  return {
    'GET /demo/switches': { answer: () => json(switches) },
    'GET /demo/requests': { answer: () => json(journal.counts) },
    'GET /demo/environment': {
      answer: () => json({ pid: process.pid, version: runtimeVersion(), ...settings.environment }),
    },
  };
}

function documentSwitches({ switches }) {
  const set = (values) => {
    applySwitches(switches, values);
    return json({ ok: true });
  };
  return {
    'POST /demo/set': { answer: ({ body }) => set(JSON.parse(body)) },
    'POST /demo/reset': { answer: () => set(defaultSwitches()) },
    'POST /demo/state': { answer: ({ url }) => set({ state: url.searchParams.get('value') || null }) },
    'POST /demo/status-document': {
      // An object, not text: the body may be no text at all.
      answer: ({ body }) => {
        switches.statusDocument = body.length > 0 ? body : null;
        return json({ ok: true });
      },
    },
    'POST /demo/exit-delay': { answer: ({ url }) => set({ exitDelayMs: number(url, 'ms', 0) }) },
  };
}

function exchangeSwitches({ switches }) {
  const disturb = (kind) => ({ url }) => {
    const others = switches[kind].filter((name) => !named(url).includes(name));
    switches[kind] = isOn(url) ? [...others, ...named(url)] : others;
    if (kind === 'drip') switches.dripMs = number(url, 'ms', 1000);
    return json({ ok: true });
  };
  const setCode = (names, value, location) => {
    for (const name of names) switches.statusCodes[name] = value;
    switches.location = location;
    return json({ ok: true });
  };
  return {
    'POST /demo/hang': { answer: disturb('hang') },
    'POST /demo/abort': { answer: disturb('abort') },
    'POST /demo/drip': { answer: disturb('drip') },
    'POST /demo/status-code': {
      answer: ({ url }) => setCode(named(url), number(url, 'value', 0), url.searchParams.get('location')),
    },
    'POST /demo/refuse-restart': { answer: ({ url }) => setCode(['restart'], isOn(url) ? 500 : 0, null) },
  };
}

function deeds(parts) {
  return {
    'POST /demo/crash': { answer: ({ url }) => crash(parts, url) },
    'POST /demo/silent': { answer: ({ url }) => fallSilent(parts, url) },
    'POST /demo/print': { answer: (exchange) => print(parts, exchange) },
    'POST /demo/close-output': { answer: () => closeOutput(parts) },
    'POST /demo/grandchild': { answer: ({ url }) => leaveGrandchild(parts, url) },
    'POST /demo/restart': { answer: () => askHost(parts) },
  };
}

function crash({ life }, url) {
  const how = url.searchParams.get('signal') || number(url, 'code', 1);
  return json({ ok: true }, 202, () => life.end(how));
}

function fallSilent({ listener, switches }, url) {
  const backAfterMs = number(url, 'ms', 0);
  if (url.searchParams.get('how') !== 'mute') {
    return json({ ok: true }, 202, () => listener.close(backAfterMs));
  }
  return json({ ok: true }, 202, () => {
    switches.mute = true;
    if (backAfterMs > 0) setTimeout(() => { switches.mute = false; }, backAfterMs);
  });
}

async function print({ output }, { url, body }) {
  const stream = url.searchParams.get('stream') || 'stdout';
  if (!['stdout', 'stderr'].includes(stream)) return failure(400, `There is no stream "${stream}".`);
  const pieceBytes = number(url, 'chunk', 0) || body.length;
  await printPieces(output, { stream, body, pieceBytes, repeat: number(url, 'repeat', 1),
    pauseMs: number(url, 'pause', 0) });
  return json({ ok: true });
}

function closeOutput({ output }) {
  output.close();
  return json({ ok: true });
}

function leaveGrandchild({ life }, url) {
  return json({ pid: life.leaveGrandchild(number(url, 'seconds', 60)) });
}

/** The host may end this process before the reply is out; ask after it. */
function askHost({ hostControl }) {
  if (!hostControl.isKnown) return failure(503, 'No host to ask for a restart.');
  return json({ ok: true }, 202, () => hostControl.requestRestart());
}

/** The exchanges meant by `what`: one name, several with commas, or "all"; "status" when absent. */
function named(url) {
  const what = url.searchParams.get('what') || 'status';
  const names = what === 'all' ? exchanges : what.split(',');
  const unknown = names.find((name) => !exchanges.includes(name));
  if (unknown !== undefined) throw new Error(`There is no exchange "${unknown}".`);
  return names;
}

function isOn(url) {
  return url.searchParams.get('on') !== '0';
}

function number(url, name, otherwise) {
  const text = url.searchParams.get(name);
  if (text === null) return otherwise;
  if (!/^-?\d+$/.test(text)) throw new Error(`"${name}" must be a whole number.`);
  return Number(text);
}

module.exports = { routes };
