// SPDX-License-Identifier: MIT
'use strict';

const { failure, send, drip } = require('./reply');

const largestBody = 64 * 1024 * 1024;

/**
 * Finds who answers a request. A route is { exchange, answer }: `answer({ url, body })` gives a reply or
 * a promise of one; `exchange`, when present, is the name by which the switches can disturb it.
 */
class Router {
  #switches;
  #journal;
  #routes = new Map();
  #fallback;
  #held = [];

  constructor(switches, journal) {
    this.#switches = switches;
    this.#journal = journal;
  }

  add(routes) {
    for (const [name, route] of Object.entries(routes)) this.#routes.set(name, route);
  }

  addFallback(answer) {
    this.#fallback = { answer };
  }

  async handle(request, response) {
    this.#journal.request(request.method, request.url);
    try {
      const url = new URL(request.url, 'http://127.0.0.1');
      const body = await readBody(request);
      if (this.#switches.mute) return;
      if (isForeignPage(request)) return send(response, failure(403, 'Not from another site.'));
      const route = this.#routes.get(`${request.method} ${url.pathname}`) || this.#fallback;
      const exchange = { request, response, url, body, route };
      if (this.#isDisturbed('hang', route)) this.#held.push(exchange);
      else await this.#finish(exchange);
      this.#releaseHeld();
    } catch (error) {
      if (!response.headersSent) send(response, failure(400, error.message));
    }
  }

  async #finish({ request, response, url, body, route }) {
    if (this.#isDisturbed('abort', route)) return request.socket.destroy();
    const reply = this.#disturbedCode(route) || (await route.answer({ url, body, method: request.method }));
    if (this.#isDisturbed('drip', route)) drip(response, reply, this.#switches.dripMs);
    else send(response, reply);
  }

  /** What hung and need not any more is answered as if it had come just now. */
  #releaseHeld() {
    const held = this.#held;
    this.#held = held.filter(({ route }) => this.#isDisturbed('hang', route));
    const free = held.filter(({ route }) => !this.#isDisturbed('hang', route));
    for (const exchange of free) this.#finish(exchange);
  }

  #isDisturbed(kind, route) {
    return this.#switches[kind].includes(route.exchange);
  }

  #disturbedCode(route) {
    const status = this.#switches.statusCodes[route.exchange];
    if (!status) return null;
    const headers = this.#switches.location ? { Location: this.#switches.location } : {};
    return { ...failure(status, 'As the switch board says.'), headers };
  }
}

/** A web page of another site must not press our switches; programs send no Origin. */
function isForeignPage(request) {
  const { origin, host } = request.headers;
  return origin !== undefined && origin !== `http://${host}`;
}

async function readBody(request) {
  const pieces = [];
  let size = 0;
  for await (const piece of request) {
    size += piece.length;
    if (size > largestBody) throw new Error('The body is too large.');
    pieces.push(piece);
  }
  return Buffer.concat(pieces);
}

module.exports = { Router };
