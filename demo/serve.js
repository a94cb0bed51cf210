// SPDX-License-Identifier: MIT
'use strict';

// serve.js FOLDER PORT: a static web server for what scripts/publish-runtime.sh has made, on the
// loopback address only. PORT 0 takes a free one; the address is printed.

const fs = require('fs');
const http = require('http');
const path = require('path');

/** The file below `folder` that the request's address names; null when it leads out of it. */
function fileOf(folder, address) {
  const { pathname } = new URL(address, 'http://127.0.0.1');
  const file = path.resolve(folder, `.${decodeURIComponent(pathname)}`);
  return file.startsWith(path.resolve(folder) + path.sep) ? file : null;
}

/** Answers a request with the named file of `folder`, or with 404. */
function answerFrom(folder, request, reply) {
  const missing = () => reply.writeHead(404).end('not here\n');
  try {
    const file = fileOf(folder, request.url);
    const size = file && fs.statSync(file).isFile() ? fs.statSync(file).size : null;
    if (size === null) return missing();
    reply.writeHead(200, { 'Content-Length': size });
    return fs.createReadStream(file).on('error', () => reply.destroy()).pipe(reply);
  } catch {
    return missing();
  }
}

/** Listens on the loopback address and prints where. */
function listen(port, answer) {
  const server = http.createServer(answer);
  server.on('error', (error) => {
    process.stderr.write(`Cannot serve: ${error.message}\n`);
    process.exit(1);
  });
  server.listen(port, '127.0.0.1', () => {
    process.stdout.write(`http://127.0.0.1:${server.address().port}\n`);
  });
}

function main([folder, port, ...others]) {
  if (!/^\d+$/.test(port) || others.length > 0) {
    process.stderr.write('usage: serve.js FOLDER PORT\n');
    process.exit(2);
  }
  listen(Number(port), (request, reply) => answerFrom(folder, request, reply));
}

if (require.main === module) main(process.argv.slice(2));

module.exports = { answerFrom, listen };
