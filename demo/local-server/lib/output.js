// SPDX-License-Identifier: MIT
'use strict';

const fs = require('fs');

const descriptors = { stdout: 1, stderr: 2 };

/**
 * Standard output and standard error, written by descriptor: one call is one write, and a pipe that
 * nobody reads stops the whole process, as it does with any program that prints. A reader that has
 * gone away is no error.
 */
class Output {
  print(stream, bytes) {
    let rest = Buffer.from(bytes);
    while (rest.length > 0) {
      const written = this.#writeOnce(descriptors[stream], rest);
      if (written === null) return;
      rest = rest.subarray(written);
    }
  }

  complain(text) {
    this.print('stderr', `${text}\n`);
  }

  /** Gives both streams up for good. The numbers stay taken, so that no socket gets them. */
  close() {
    for (const descriptor of Object.values(descriptors)) {
      fs.closeSync(descriptor);
      fs.openSync('/dev/null', 'w');
    }
  }

  #writeOnce(descriptor, bytes) {
    try {
      return fs.writeSync(descriptor, bytes);
    } catch (error) {
      if (error.code === 'EAGAIN') return 0;
      if (error.code === 'EPIPE') return null;
      throw error;
    }
  }
}

module.exports = { Output };
