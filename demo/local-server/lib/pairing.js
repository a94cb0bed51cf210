// SPDX-License-Identifier: MIT
'use strict';

const crypto = require('crypto');
const fs = require('fs');
const path = require('path');

const unpaired = { workspaceId: null, signedIn: false };

/**
 * Whether this machine is paired, and with which workspace. Kept in demo-connector.json of the state
 * root; without a state root it lasts as long as the process.
 */
class Pairing {
  #file;
  #record;
  #pending = null;

  constructor(stateRoot, output) {
    this.#file = stateRoot && path.join(stateRoot, 'demo-connector.json');
    this.#record = this.#read(output);
  }

  get workspaceId() {
    return this.#record.workspaceId;
  }

  get state() {
    if (this.#record.workspaceId === null) return 'NEEDS_PAIRING';
    return this.#record.signedIn ? 'RUNNING' : 'NEEDS_LOGIN';
  }

  /** Pairs after `delayMs`; signing out meanwhile cancels it. */
  begin(delayMs) {
    this.#cancelPending();
    if (delayMs <= 0) this.#pair();
    else this.#pending = setTimeout(() => this.#pair(), delayMs);
  }

  signOut(unpair) {
    this.#cancelPending();
    this.#write(unpair ? unpaired : { ...this.#record, signedIn: false });
  }

  #pair() {
    const workspaceId = this.#record.workspaceId || `demo-${crypto.randomBytes(3).toString('hex')}`;
    this.#write({ workspaceId, signedIn: true });
  }

  #cancelPending() {
    clearTimeout(this.#pending);
    this.#pending = null;
  }

  #read(output) {
    if (!this.#file || !fs.existsSync(this.#file)) return unpaired;
    try {
      const { workspaceId, signedIn } = JSON.parse(fs.readFileSync(this.#file, 'utf8'));
      return { workspaceId: workspaceId || null, signedIn: signedIn === true };
    } catch (error) {
      output.complain(`Pairing forgotten, its file cannot be read: ${error.message}`);
      return unpaired;
    }
  }

  #write(record) {
    if (this.#file) writeAtomically(this.#file, `${JSON.stringify(record, null, 2)}\n`);
    this.#record = record;
  }
}

/** A crash at any moment leaves the old content or the new one, never a torn file. */
function writeAtomically(file, text) {
  const temporary = `${file}.${process.pid}`;
  const descriptor = fs.openSync(temporary, 'w', 0o600);
  try {
    fs.writeFileSync(descriptor, text);
    fs.fsyncSync(descriptor);
  } finally {
    fs.closeSync(descriptor);
  }
  fs.renameSync(temporary, file);
}

module.exports = { Pairing };
