// SPDX-License-Identifier: MIT
'use strict';

// A runtime as large as a real one, the same on every machine: the demo connector, which runs, among
// 190 MB in 4,002 files that compress to about a half. Half of it is one file, as node is.

const fs = require('fs');
const path = require('path');

const FILES = 4002;
const BYTES = 190e6;
const LARGEST = 95e6;
const FILES_PER_FOLDER = 50;

const POOL_BYTES = 8 * 1024 * 1024;
const PIECE = 64 * 1024;
const WORDS = 4096;
/** How much of the pool is noise; chosen for an archive of 92 MB. */
const NOISE = 0.02;

/** Marsaglia's xorshift: the same numbers everywhere. */
class Numbers {
  constructor(seed) {
    this.state = seed;
  }

  /** A whole number below `limit`. */
  below(limit) {
    let x = this.state;
    x ^= x << 13;
    x ^= x >>> 17;
    x ^= x << 5;
    this.state = x >>> 0;
    return this.state % limit;
  }
}

function word(numbers) {
  const letters = Buffer.alloc(4 + numbers.below(9));
  for (let i = 0; i < letters.length; ++i) letters[i] = 97 + numbers.below(26);
  return letters;
}

/** Words and noise, mixed; deflate looks back 32 KiB, so pieces of it in any order compress alike. */
function pool(numbers) {
  const words = Array.from({ length: WORDS }, () => word(numbers));
  const bytes = Buffer.alloc(POOL_BYTES);
  let at = 0;
  while (at < bytes.length) {
    if (numbers.below(1000) < NOISE * 1000) {
      for (const end = Math.min(at + 8, bytes.length); at < end; ++at) bytes[at] = numbers.below(256);
    } else {
      // Some words are common, most are rare.
      at += words[numbers.below(1 + numbers.below(WORDS))].copy(bytes, at);
    }
  }
  return bytes;
}

class Writer {
  constructor() {
    this.numbers = new Numbers(1);
    this.pool = pool(this.numbers);
  }

  write(file, size) {
    const bytes = Buffer.alloc(size);
    for (let at = 0; at < size; at += PIECE) {
      const from = this.numbers.below(POOL_BYTES - PIECE);
      this.pool.copy(bytes, at, from, from + Math.min(PIECE, size - at));
    }
    fs.mkdirSync(path.dirname(file), { recursive: true });
    fs.writeFileSync(file, bytes);
  }
}


/** What is there already, in files and bytes. */
function extent(folder) {
  let bytes = 0;
  let files = 0;
  for (const entry of fs.readdirSync(folder, { withFileTypes: true })) {
    const at = path.join(folder, entry.name);
    if (entry.isDirectory()) {
      const below = extent(at);
      bytes += below.bytes;
      files += below.files;
    } else {
      bytes += fs.statSync(at).size;
      files += 1;
    }
  }
  return { bytes, files };
}

/** Makes the runtime in `folder`, which must not exist; its connector is run by `node`. */
function makeRuntime(folder, version, demo, node) {
  const server = path.join(folder, 'local-server');
  fs.mkdirSync(path.join(folder, 'node-runtime'), { recursive: true });
  fs.cpSync(demo, server, { recursive: true });
  const metadata = {
    version,
    platform: process.platform === 'darwin' ? 'macos' : process.platform,
    arch: process.arch === 'x64' ? 'x86_64' : process.arch,
  };
  fs.writeFileSync(path.join(server, 'runtime.json'), JSON.stringify(metadata));
  fs.writeFileSync(path.join(folder, 'node-runtime/node'), `#!/bin/sh\nexec '${node}' "$@"\n`, {
    mode: 0o755,
  });
  const writer = new Writer();
  writer.write(path.join(folder, 'node-runtime/library.bin'), LARGEST);
  const there = extent(folder);
  const missing = FILES - there.files;
  const size = Math.floor((BYTES - there.bytes) / missing);
  for (let i = 0; i < missing; ++i) {
    // From a half to one and a half of the mean.
    const own = Math.floor(size * (0.5 + (i % 101) / 100));
    const name = `modules/${Math.floor(i / FILES_PER_FOLDER)}/${i}.js`;
    writer.write(path.join(server, name), own);
  }
}

module.exports = { makeRuntime, extent };
