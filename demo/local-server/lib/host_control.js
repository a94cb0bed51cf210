// SPDX-License-Identifier: MIT
'use strict';

const http = require('http');

const limitMs = 5000;

/** The way back to the host that started this connector. */
class HostControl {
  #url;
  #output;

  constructor(url, output) {
    this.#url = url;
    this.#output = output;
  }

  get isKnown() {
    return this.#url !== null;
  }

  /**
   * Asks the host for a restart, once. Resolves to the status of its reply, or to null when there was
   * none; the reason goes to standard error.
   */
  requestRestart() {
    return new Promise((resolve) => {
      const fail = (error) => {
        this.#output.complain(`The host did not take the restart request: ${error.message}`);
        resolve(null);
      };
      if (!this.isKnown) return fail(new Error('its address is not known'));
      const request = http.request(this.#url, { method: 'POST', agent: false, timeout: limitMs });
      request.on('response', (response) => {
        response.resume();
        resolve(response.statusCode);
      });
      request.on('timeout', () => request.destroy(new Error('no reply in time')));
      request.on('error', fail);
      request.end();
    });
  }
}

module.exports = { HostControl };
