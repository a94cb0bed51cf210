#!/usr/bin/env node
// SPDX-License-Identifier: MIT
'use strict';

// report.js RESULTS_FILE: the figures of one run as a table, and a line about the machine.

const fs = require('fs');
const os = require('os');
const { execFileSync } = require('child_process');
const { median, quantile } = require('./harness/figures');

const peers = ['s6', 'supervisor', 'syncthingtray', 'keepassxc', 'flameshot', 'qlipper', 'network-manager-gnome'];

function number(value) {
  if (value === 0) return '0';
  const digits = Math.abs(value) >= 1000 ? 1 : Math.abs(value) >= 100 ? 1 : Math.abs(value) >= 1 ? 2 : 3;
  return value.toFixed(digits);
}

function spread(values) {
  if (values.length < 2) return '';
  const [low, high] = values.length > 20 ? [quantile(values, 0.25), quantile(values, 0.75)]
    : [Math.min(...values), Math.max(...values)];
  return ` (${number(low)} to ${number(high)})`;
}

function cell(series) {
  return `${number(median(series.values))}${spread(series.values)}`;
}

function ratio(ours, other) {
  return other && median(other.values) !== 0 ? (median(ours.values) / median(other.values)).toFixed(2) : '';
}

function rowsOf(figure) {
  const ours = figure.series.filter(({ role }) => role === 'ours');
  const limit = figure.series.find(({ role }) => role === 'limit');
  const rivals = figure.series.filter(({ role }) => role === 'peer')
    .sort((a, b) => median(a.values) - median(b.values));
  const asides = figure.series.filter((series) => !['ours', 'peer'].includes(series.role) && series !== limit);
  const others = [limit, ...rivals, ...asides].filter(Boolean)
    .map((series) => `${series.name} ${cell(series)}`).join('; ');
  const list = ours.length > 0 ? ours : [undefined];
  return list.map((series, index) => [
    index === 0 ? `${figure.title} [${figure.unit}]` : '',
    series ? `${list.length > 1 ? `${series.name} ` : ''}${cell(series)}` : 'not measured',
    index === 0 ? others : '',
    series ? ratio(series, limit) : '',
    series ? ratio(series, rivals[0]) : '',
    index === 0 ? figure.bar || '' : '',
    index === 0 ? verdict(figure) : '',
  ]);
}

function verdict(figure) {
  return figure.met === undefined || figure.met === null ? '' : figure.met ? 'met' : '**missed**';
}

function installed(name) {
  try {
    const query = ['-W', '-f', '${Version}', name];
    const version = execFileSync('dpkg-query', query, { stdio: ['ignore', 'pipe', 'ignore'] });
    return version.length > 0 ? `${name} ${version}` : `${name} not there`;
  } catch (error) {
    return `${name} not there`;
  }
}

function pm2() {
  try {
    return `pm2 ${require(`${process.env.BENCH_PEERS}/node_modules/pm2/package.json`).version}`;
  } catch (error) {
    return 'pm2 not there';
  }
}

function machine() {
  const load = os.loadavg().map((value) => value.toFixed(2)).join(' ');
  return `${os.cpus()[0].model}, ${os.cpus().length} cores, ${Math.round(os.totalmem() / 2 ** 30)} GiB, ` +
    `Linux ${os.release()}, load at the end ${load}, Node ${process.versions.node}. ` +
    `Peers: ${[...peers.map(installed), pm2()].join(', ')}.`;
}

function main(file) {
  const figures = fs.readFileSync(file, 'utf8').split('\n').filter(Boolean).map((line) => JSON.parse(line));
  const table = figures.flatMap(rowsOf).map((cells) => `| ${cells.join(' | ')} |`);
  console.log('Medians; in brackets the least and the most, or the quartiles of more than 20 values.\n');
  console.log('| figure | ours | limit; peers | ours / limit | ours / best peer | bar | |');
  console.log('|---|---|---|---|---|---|---|');
  console.log(table.join('\n'));
  const notes = figures.filter(({ note }) => note).map(({ title, note }) => `- ${title}: ${note}`);
  if (notes.length > 0) console.log(`\n${notes.join('\n')}`);
  console.log(`\n${machine()}`);
}

main(process.argv[2]);
