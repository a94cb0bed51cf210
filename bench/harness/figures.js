// SPDX-License-Identifier: MIT
'use strict';

// Figures as the groups hand them to the table: one line of JSON each.

const fs = require('fs');

const rounds = Number(process.env.BENCH_ROUNDS || 5);

function sorted(values) {
  return [...values].sort((a, b) => a - b);
}

// Between two neighbours where the quantile falls between them.
function quantile(values, share) {
  const inOrder = sorted(values);
  const place = (inOrder.length - 1) * share;
  const below = Math.floor(place);
  const above = Math.min(below + 1, inOrder.length - 1);
  return inOrder[below] + (inOrder[above] - inOrder[below]) * (place - below);
}

function median(values) {
  return quantile(values, 0.5);
}

// Measures every contender ({name, role, measure}) once a round, each round beginning with another
// one. `measure` answers a number, or a list of numbers that all count. One that fails is left out
// of the whole series, and the reason goes to the note.
async function alternate(contenders, count = rounds) {
  const series = contenders.map(({ name, role }) => ({ name, role, values: [] }));
  const failures = new Map();
  for (let round = 0; round < count; ++round) {
    for (let turn = 0; turn < contenders.length; ++turn) {
      const which = (round + turn) % contenders.length;
      if (failures.has(which)) continue;
      try {
        series[which].values.push(...[await contenders[which].measure(round)].flat());
      } catch (error) {
        failures.set(which, error.message);
        console.log(`  ${contenders[which].name} is left out: ${error.message}`);
      }
    }
  }
  return {
    series: series.filter((_, which) => !failures.has(which)),
    note: [...failures].map(([which, reason]) => `${contenders[which].name} left out: ${reason}`).join('; '),
  };
}

// The median of the first series with that role or name; undefined when it was left out.
function medianOf(series, roleOrName) {
  const found = series.find(({ role, name }) => role === roleOrName || name === roleOrName);
  return found && median(found.values);
}

// Whether a bar that compares medians holds; false when one of them is missing.
function holds(condition, ...values) {
  return values.every((value) => Number.isFinite(value)) && condition(...values);
}

// A figure without a bar is reported only.
function verdict({ met }) {
  return met === undefined || met === null ? '' : met ? '; met' : '; MISSED';
}

function record(file, figure) {
  fs.appendFileSync(file, JSON.stringify(figure) + '\n');
  const summary = figure.series.map(({ name, values }) => `${name} ${median(values).toPrecision(4)}`);
  console.log(`  ${figure.title}: ${summary.join(', ')} ${figure.unit}${verdict(figure)}`);
}

module.exports = { rounds, quantile, median, alternate, medianOf, holds, record };
