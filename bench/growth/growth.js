// SPDX-License-Identifier: MIT
'use strict';

// Polls at the shortest interval there is, a millisecond, until very many have been made: the last tenth
// must cost what the first did, in processor time and in memory.

const { record } = require('../harness/figures');
const { pause } = require('../harness/events');
const { makeState, Tray } = require('../harness/programs');
const { usage, memory, acceptedConnections } = require('../harness/processes');

const allPolls = Number(process.env.BENCH_POLLS || 100000);
const parts = 10;
const longestMs = 300000;

function sample(tray) {
  return { ...usage([tray.pid]), memory: memory([tray.pid]).unique, polls: acceptedConnections() };
}

async function until(polls, deadline) {
  while (acceptedConnections() < polls) {
    if (Date.now() > deadline) throw new Error(`${acceptedConnections()} of ${polls} polls came about`);
    await pause(50);
  }
}

function figure(id, title, unit, [first, ...rest], bar, met) {
  return { figure: id, title, unit, bar, met, series: [
    { name: 'Orvanta, last tenth', role: 'ours', values: [rest[rest.length - 1]] },
    { name: 'first tenth', role: 'limit', values: [first] },
  ] };
}

async function main(results) {
  const tray = new Tray(makeState({ pollSeconds: 0.001 }), { terminal: true });
  await pause(1500);
  const samples = [sample(tray)];
  const begin = samples[0].polls;
  const deadline = Date.now() + longestMs;
  for (let part = 1; part <= parts; ++part) {
    await until(begin + part * allPolls / parts, deadline);
    samples.push(sample(tray));
  }
  await tray.end();
  const costs = samples.slice(1).map((one, index) => (one.ms - samples[index].ms) / (one.polls - samples[index].polls));
  const sizes = samples.slice(1).map((one) => one.memory);
  const last = parts - 1;
  const words = `of ${allPolls} polls`;
  record(results, figure('growth-processor', `processor time of a poll, last tenth ${words}`, 'ms', costs,
    '1.1 × the first tenth at most', costs[last] <= 1.1 * costs[0]));
  record(results, figure('growth-memory', `unique set after the last tenth ${words}`, 'MiB', sizes,
    'half a MiB more than after the first tenth at most', sizes[last] <= sizes[0] + 0.5));
  console.log(`  by tenths: ${costs.map((cost) => cost.toFixed(3)).join(' ')} ms; ${sizes.map((size) => size.toFixed(2)).join(' ')} MiB`);
  process.exit(0);
}

main(process.argv[2]).catch((error) => {
  console.log(`  not measured: ${error.message}`);
  process.exit(1);
});
