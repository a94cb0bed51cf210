// SPDX-License-Identifier: MIT
'use strict';

const { json, failure } = require('./reply');
const { statusDocument } = require('./status');

/** What a connector offers to its host. */
function routes(parts) {
  return {
    'GET /api/ov/status': { exchange: 'status', answer: () => status(parts) },
    'GET /api/ov/health': { exchange: 'health', answer: () => json({ healthy: true }) },
    'POST /api/ov/pair/start': { exchange: 'pair', answer: () => startPairing(parts) },
    'POST /api/ov/logout': { exchange: 'logout', answer: ({ url }) => signOut(parts, url) },
    'POST /api/server/restart': { exchange: 'restart', answer: () => restart(parts) },
  };
}

function status(parts) {
  const raw = parts.switches.statusDocument;
  if (raw === null) return json(statusDocument(parts));
  return { status: 200, type: 'application/json', body: raw };
}

function startPairing({ pairing, switches }) {
  pairing.begin(switches.pairDelayMs);
  return json({ accepted: true });
}

function signOut({ pairing }, url) {
  pairing.signOut(url.searchParams.get('unpair') === '1');
  return json({ accepted: true });
}

/** Answers first: the host ends this process while it restarts it. */
function restart({ hostControl }) {
  if (!hostControl.isKnown) return failure(503, 'No host to ask for a restart.');
  return json({ accepted: true }, 202, () => hostControl.requestRestart());
}

module.exports = { routes };
