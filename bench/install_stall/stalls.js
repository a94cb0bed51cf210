// SPDX-License-Identifier: MIT
'use strict';

// stalls.js RESULTS_FILE: what install_stall measures, as figures for the table.

const path = require('path');
const { execFileSync } = require('child_process');
const { holds, medianOf, record, rounds } = require('../harness/figures');

const program = path.join(process.env.BENCH_BUILD, 'bench/install_stall/install_stall');
const BARS = { '99 %': 4, worst: 16 };
const PHASES = { '2 seed': 'seeding', '3 install': 'installing' };

/** The lines of the program by phase; publishing scripts say on standard output what they do. */
function measure() {
  const phases = new Map();
  const text = execFileSync(program, [String(rounds), '--raw'], {
    encoding: 'utf8',
    stdio: ['ignore', 'pipe', 'inherit'],
  });
  for (const line of text.split('\n').filter((each) => each.includes('\t'))) {
    const [phase, ninetyNine, worst, busiest, duration] = line.split('\t');
    const run = { '99 %': Number(ninetyNine), worst: Number(worst), busiest: Number(busiest) };
    phases.set(phase, [...(phases.get(phase) || []), { ...run, duration: Number(duration) }]);
  }
  return phases;
}

function valuesOf(runs, name) {
  return runs.map((run) => run[name]);
}

function recordStall(file, phases, phase, name) {
  const runs = phases.get(phase);
  const series = [
    { name: 'Orvanta', role: 'ours', values: valuesOf(runs, name) },
    { name: 'the same loop at rest', role: 'limit', values: valuesOf(phases.get('1 idle'), name) },
  ];
  record(file, {
    figure: `stall-${phase.slice(2)}-${name === 'worst' ? name : '99'}`,
    title: `How late a beat of the main thread comes while ${PHASES[phase]}, ${name}`,
    unit: 'ms',
    series,
    bar: name === 'worst' ? `under ${BARS[name]} ms in every run` : `under ${BARS[name]} ms, the median of the runs`,
    met: holds((ours) => ours < BARS[name], name === 'worst' ? Math.max(...series[0].values) : medianOf(series, 'ours')),
    note: `the main thread itself computed for at most ${Math.max(...valuesOf(runs, 'busiest')).toFixed(2)} ms ` +
      'between two beats',
  });
}

function recordPrune(file, phases) {
  const series = [{ name: 'Orvanta', role: 'ours', values: valuesOf(phases.get('4 prune'), 'duration') }];
  record(file, {
    figure: 'stall-prune',
    title: 'How long the main thread stands still for the pruning of a version of 5,000 files',
    unit: 'ms',
    series,
    bar: `under ${BARS.worst} ms`,
    met: holds((ours) => ours < BARS.worst, medianOf(series, 'ours')),
    note: 'a rename by design; the worker removes the files',
  });
}

function main(file) {
  const phases = measure();
  for (const phase of Object.keys(PHASES)) {
    for (const name of Object.keys(BARS)) recordStall(file, phases, phase, name);
  }
  recordPrune(file, phases);
}

main(process.argv[2]);
