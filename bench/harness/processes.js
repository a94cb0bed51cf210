// SPDX-License-Identifier: MIT
'use strict';

// What running processes cost, read from outside.

const fs = require('fs');
const { execFileSync } = require('child_process');
const { own } = require('./programs');

function sum(values) {
  return values.reduce((a, b) => a + b, 0);
}

function isAlive(pid) {
  try {
    return !/^State:\s+Z/m.test(fs.readFileSync(`/proc/${pid}/status`, 'utf8'));
  } catch (error) {
    return false;
  }
}

// All processes below `pid` whose name fits, itself included.
function family(pid, fits = () => true) {
  const children = fs.readFileSync(`/proc/${pid}/task/${pid}/children`, 'utf8').split(' ').filter(Boolean).map(Number);
  const name = fs.readFileSync(`/proc/${pid}/comm`, 'utf8').trim();
  return [...(fits(name) ? [pid] : []), ...children.flatMap((child) => family(child, fits))];
}

// Proportional and unique set, MiB, together.
function memory(pids) {
  const kilobytes = pids.map((pid) => {
    const rollup = fs.readFileSync(`/proc/${pid}/smaps_rollup`, 'utf8');
    const of = (name) => Number(new RegExp(`^${name}:\\s+(\\d+)`, 'm').exec(rollup)[1]);
    return { proportional: of('Pss'), unique: of('Private_Clean') + of('Private_Dirty') };
  });
  return {
    proportional: sum(kilobytes.map(({ proportional }) => proportional)) / 1024,
    unique: sum(kilobytes.map(({ unique }) => unique)) / 1024,
  };
}

// Milliseconds of processor time and voluntary switches until now, together.
function usage(pids) {
  const output = execFileSync(own('harness', 'usage'), pids.map(String), { encoding: 'utf8' });
  const lines = output.trim().split('\n').map((line) => line.split(' ').map(Number));
  return { ms: sum(lines.map(([, ns]) => ns)) / 1e6, switches: sum(lines.map(([, , switches]) => switches)) };
}

// Connections that were accepted in this world's network until now: each poll makes one.
function acceptedConnections() {
  const [names, values] = fs.readFileSync('/proc/net/snmp', 'utf8').split('\n').filter((line) => line.startsWith('Tcp:'))
    .map((line) => line.split(' '));
  return Number(values[names.indexOf('PassiveOpens')]);
}

module.exports = { isAlive, family, memory, usage, acceptedConnections };
