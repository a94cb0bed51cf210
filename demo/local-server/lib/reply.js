// SPDX-License-Identifier: MIT
'use strict';

/**
 * A reply before it is sent: { status, type, headers, body, after }; `after` runs once it has been
 * handed to the system.
 */
function json(value, status = 200, after = null) {
  return { status, type: 'application/json', body: `${JSON.stringify(value, null, 2)}\n`, after };
}

function failure(status, message) {
  return json({ error: message }, status);
}

function send(response, reply) {
  writeHead(response, reply);
  response.end(reply.body);
}

/** Sends the body one byte at a time, so that the exchange never idles and takes long. */
function drip(response, reply, everyMs) {
  writeHead(response, reply);
  const body = Buffer.from(reply.body);
  let sent = 0;
  const timer = setInterval(() => {
    response.write(body.subarray(sent, sent + 1));
    sent += 1;
    if (sent < body.length) return;
    clearInterval(timer);
    response.end();
  }, everyMs);
  response.on('close', () => clearInterval(timer));
}

function writeHead(response, reply) {
  response.writeHead(reply.status, {
    'Content-Type': reply.type,
    'Content-Length': Buffer.byteLength(reply.body),
    'Cache-Control': 'no-store',
    ...reply.headers,
  });
  if (reply.after) response.on('finish', reply.after);
}

module.exports = { json, failure, send, drip };
