// SPDX-License-Identifier: MIT
// outside_server.js KEY CERTIFICATE: an http and an https server on 127.0.0.1 with the same pages.
// Prints their two ports and serves until its standard input ends.
'use strict';
const fs = require('fs');
const http = require('http');
const https = require('https');
const net = require('net');

const [key, cert] = process.argv.slice(2).map(path => fs.readFileSync(path));
const ports = {};
let connections = 0;

const redirect = (reply, location, status = 302) => reply.writeHead(status, { location }).end('moved');
const at = (scheme, path) => `${scheme}://localhost:${ports[scheme]}${path}`;

const pages = {
    '/ok': (_, reply) => reply.end('fine'),
    '/missing': (_, reply) => reply.writeHead(404).end('no such page'),
    '/unchanged': (_, reply) => reply.writeHead(304).end(),
    '/request': (request, reply) => reply.end(request.method + ' ' + request.httpVersion + '\n' + request.rawHeaders.join('\n')),
    '/connections': (_, reply) => reply.end(String(connections)),
    '/to-http': (_, reply) => redirect(reply, at('http', '/ok')),
    '/to-https': (_, reply) => redirect(reply, at('https', '/ok')),
    '/there-and-back': (_, reply) => redirect(reply, at('https', '/to-http')),
    '/to-elsewhere': (_, reply) => redirect(reply, 'https://name.invalid/ok'),
    '/to-file': (_, reply) => redirect(reply, 'file:///etc/hostname'),
    '/once-more': (_, reply) => redirect(reply, '/request', 307),
    '/cookie': (_, reply) => reply.writeHead(302, { location: '/request', 'set-cookie': 'a=b' }).end(),
    '/large': (_, reply) => reply.end(Buffer.alloc(40 * 1024 * 1024, 'x')),
    '/large-and-missing': (_, reply) => reply.writeHead(404).end(Buffer.alloc(4 * 1024 * 1024, 'x')),
    '/cut': (_, reply) => {
        reply.writeHead(200, { 'content-length': 1000 });
        reply.write('x'.repeat(500), () => reply.socket.destroy());
    },
    '/cut-chunks': (_, reply) => reply.write('x'.repeat(500), () => reply.socket.destroy()),
    '/drip': (_, reply) => {
        let left = 10;
        const timer = setInterval(() => (left-- > 0 ? reply.write('.') : (clearInterval(timer), reply.end())), 200);
    },
    '/silence': (_, reply) => reply.write('x'),
};

function serve(request, reply) {
    const hops = /^\/hops\/(\d+)$/.exec(request.url);
    if (hops) return hops[1] > 0 ? redirect(reply, `/hops/${hops[1] - 1}`) : reply.end('arrived');
    const url = request.url.replace(/^http:\/\/[^/]*/, '');
    if (url !== request.url) return reply.end('through the proxy: ' + request.url);
    (pages[url] ?? pages['/missing'])(request, reply);
}

const servers = { http: http.createServer(serve), https: https.createServer({ key, cert }, serve) };
for (const server of Object.values(servers)) server.on('connection', () => ++connections);
servers.http.on('connect', (_, socket) => {
    const server = net.connect(ports.https, '127.0.0.1', () => socket.write('HTTP/1.1 200 Connected\r\nX-Proxy: yes\r\n\r\n'));
    server.on('error', () => socket.destroy());
    socket.on('error', () => server.destroy());
    server.pipe(socket).pipe(server);
});
servers.http.listen(0, '127.0.0.1', () => servers.https.listen(0, '127.0.0.1', () => {
    for (const scheme of Object.keys(servers)) ports[scheme] = servers[scheme].address().port;
    console.log(ports.http, ports.https);
}));
process.stdin.on('end', () => process.exit()).resume();
