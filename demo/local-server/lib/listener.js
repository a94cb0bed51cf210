// SPDX-License-Identifier: MIT
'use strict';

const http = require('http');

/** The port: opening it, announcing it, and closing it for a while. */
class Listener {
  #server;
  #settings;
  #switches;
  #output;
  #journal;
  #port = null;

  constructor(settings, switches, output, journal, onExchange) {
    this.#settings = settings;
    this.#switches = switches;
    this.#output = output;
    this.#journal = journal;
    this.#server = http.createServer(onExchange);
    this.#server.on('error', (error) => this.#refuse(error));
  }

  /** The port being listened on; null before the first time. */
  get port() {
    return this.#port;
  }

  get origin() {
    return `http://127.0.0.1:${this.#port}`;
  }

  start() {
    if (!this.#switches.listen) {
      setInterval(() => {}, 1 << 30);
      return;
    }
    setTimeout(() => this.#open(this.#settings.requestedPort), this.#switches.listenDelayMs);
  }

  /** Closes the port and every connection; opens it again, announced anew, after `backAfterMs` if > 0. */
  close(backAfterMs) {
    this.#server.close();
    this.#server.closeAllConnections();
    if (backAfterMs > 0) setTimeout(() => this.#open(this.#port), backAfterMs);
    else setInterval(() => {}, 1 << 30);
  }

  #open(port) {
    this.#server.listen(port, this.#settings.host, () => {
      this.#port = this.#server.address().port;
      this.#journal.listening(this.#port);
      this.#announce();
    });
  }

  /** One write: the reader does not join pieces. */
  #announce() {
    if (!this.#switches.announce) return;
    const text = this.#switches.announceText.replace('{port}', String(this.#port));
    this.#output.print(this.#switches.announceStream, text);
  }

  #refuse(error) {
    const { host, requestedPort } = this.#settings;
    this.#output.complain(`Demo connector cannot listen on ${host}:${requestedPort}: ${error.message}`);
    process.exit(1);
  }
}

module.exports = { Listener };
