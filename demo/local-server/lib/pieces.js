// SPDX-License-Identifier: MIT
'use strict';

/** Prints `body` `repeat` times, each in writes of `pieceBytes` with `pauseMs` between two writes. */
async function printPieces(output, { stream, body, pieceBytes, repeat, pauseMs }) {
  for (let round = 0; round < repeat; round += 1) {
    for (let start = 0; start < body.length; start += pieceBytes) {
      if (pauseMs > 0 && (round > 0 || start > 0)) await sleep(pauseMs);
      output.print(stream, body.subarray(start, start + pieceBytes));
    }
  }
}

function sleep(milliseconds) {
  return new Promise((resolve) => setTimeout(resolve, milliseconds));
}

module.exports = { printPieces };
