// SPDX-License-Identifier: MIT
// channel_server.js FOLDER: demo/serve.js on a free port, whose network can be made to misbehave by
// the first folder of an address: /moved/FILE, /cut/FILE and /slow/FILE.
'use strict';
const fs = require('fs');
const path = require('path');
const { answerFrom, listen } = require('../../../demo/serve.js');

const folder = process.argv[2];
const slowPieces = 20, slowPauseMs = 100;

function slowly(bytes, reply) {
    const piece = Math.ceil(bytes.length / slowPieces);
    let sent = 0;
    const timer = setInterval(() => {
        reply.write(bytes.subarray(sent, sent += piece));
        if (sent >= bytes.length) clearInterval(timer), reply.end();
    }, slowPauseMs);
}

const disturbed = {
    moved: (file, reply) => reply.writeHead(302, { location: `/${file}` }).end('moved'),
    cut: (file, reply) => {
        const bytes = fs.readFileSync(path.join(folder, file));
        reply.writeHead(200, { 'content-length': bytes.length });
        reply.write(bytes.subarray(0, bytes.length / 2), () => reply.socket.destroy());
    },
    slow: (file, reply) => slowly(fs.readFileSync(path.join(folder, file)), reply),
};

listen(0, (request, reply) => {
    const [, how, file] = /^\/([a-z]+)\/(.*)$/.exec(request.url) ?? [];
    if (how in disturbed) disturbed[how](file, reply);
    else answerFrom(folder, request, reply);
});
