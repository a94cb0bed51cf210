// SPDX-License-Identifier: MIT
'use strict';

// install.js RESULTS_FILE: how long the installation of a runtime takes and what memory it needs, beside
// plain tools. To be run by trees.sh.

const fs = require('fs');
const path = require('path');
const { spawn } = require('child_process');
const { setTimeout: sleep } = require('timers/promises');
const { alternate, holds, median, medianOf, record, rounds } = require('../harness/figures');
const { publishAndServe } = require('./channel');
const { makeRuntime } = require('./generated_runtime');
const { childrenOf, forgetPeak, held, watchPeaks } = require('./memory');
const { INFLATE, INSTALL, SETTLE, TWO_EXTRACTORS, timed } = require('./plain_tools');
const { Tray, makeStateRoot } = require('./tray');

const root = path.resolve(__dirname, '../..');
const demo = path.join(root, 'demo/local-server');
const trees = process.env.BENCH_TREES;
const executable = path.join(process.env.BENCH_BUILD, 'stage/bin/orvanta-tray');

const REST_MS = 2000;
const LOOK_MS = 100;
const ALLOWED = 1.1;
const ALLOWED_MIB = 32;

/** Publishes a runtime on this machine; where, and what the archive is. */
async function publish() {
  const runtime = path.join(trees, 'runtime');
  const out = path.join(trees, 'out');
  makeRuntime(runtime, '2.0.0', demo, process.execPath);
  const { server, baseUrl } = await publishAndServe(runtime, out);
  const folder = path.join(out, 'beta', fs.readdirSync(path.join(out, 'beta'))[0]);
  const channel = path.join(folder, fs.readdirSync(folder)[0]);
  const manifest = JSON.parse(fs.readFileSync(path.join(channel, 'manifest.json')));
  const archive = path.join(channel, path.basename(manifest.archiveUrl));
  return { server, baseUrl, archive, address: manifest.archiveUrl, digest: manifest.sha256 };
}

/**
 * Everybody begins alike: what was there before has been written or removed, and the archive has just been read,
 * since a machine may take the pages of a file back within seconds.
 */
async function rest(archive) {
  await sleep(REST_MS);
  fs.readFileSync(archive);
}

/** Installs with the built product; what was seen of it. */
async function installWithTray(home, { archive, baseUrl }) {
  makeStateRoot(path.join(home, 'Orvanta'), '1.0.0', demo, process.execPath, baseUrl);
  await timed(SETTLE);
  const tray = new Tray(executable, home);
  try {
    await tray.line(/Runtime: Update available: 2\.0\.0/);
    await rest(archive);
    const idle = held(tray.pid, 'VmRSS');
    forgetPeak(tray.pid);
    const connector = childrenOf(tray.pid);
    const stop = watchPeaks(() => childrenOf(tray.pid).filter((pid) => !connector.includes(pid)), LOOK_MS);
    const [installed, updated] = [tray.line(/Status: Restarting\.\.\./), tray.line(/Runtime: Updated to 2\.0\.0/)];
    const began = tray.choose('Update Desktop Connector');
    const ended = await installed;
    const child = stop();
    const peak = held(tray.pid, 'VmHWM');
    return { installed: ended - began, whole: (await updated) - began, grown: peak - idle, child };
  } finally {
    await tray.quit();
  }
}

/** Downloads to a file; the largest resident size of curl. */
async function downloadToFile(address, file) {
  const curl = spawn('curl', ['--silent', '--fail', '-o', file, address], { stdio: 'inherit' });
  const stop = watchPeaks(() => [curl.pid], 1);
  await new Promise((resolve) => curl.once('exit', resolve));
  return stop();
}

function contendersFor(published, runs) {
  const variables = { ADDRESS: published.address, ARCHIVE: published.archive, DIGEST: published.digest };
  const plain = (name, script) => async (round) => {
    await timed(SETTLE);
    await rest(published.archive);
    return timed(script, { ...variables, FOLDER: path.join(trees, `${name}-${round}`) });
  };
  return [
    {
      name: 'Orvanta',
      role: 'ours',
      measure: async (round) => {
        const run = await installWithTray(path.join(trees, `home-${round}`), published);
        runs.push(run);
        return run.installed;
      },
    },
    { name: 'curl, openssl, bsdtar, mv', role: 'peer', measure: plain('plain', INSTALL) },
    { name: 'two extractors at once', role: 'limit', measure: plain('two', TWO_EXTRACTORS) },
    { name: 'inflate alone', role: 'limit', measure: plain('inflate', INFLATE) },
  ];
}

function recordDuration(file, { series, note }, runs) {
  const plain = medianOf(series, 'curl, openssl, bsdtar, mv');
  const ours = medianOf(series, 'ours');
  const restart = median(runs.map(({ whole, installed }) => whole - installed));
  record(file, {
    figure: 'install',
    title: 'Update chosen until a runtime of 190 MB in 4,002 files is installed',
    unit: 'ms',
    series,
    bar: `at most ${ALLOWED.toFixed(2)} x curl, openssl, bsdtar, mv`,
    met: holds((one, other) => one <= ALLOWED * other, ours, plain),
    note: [
      `the result line follows ${restart.toFixed(0)} ms later, after the pause that every restart of the connector begins with`,
      `inflating alone takes ${medianOf(series, 'inflate alone')?.toFixed(0)} ms`,
      note,
    ].filter(Boolean).join('; '),
  });
}

async function recordMemory(file, published, runs) {
  const archive = fs.statSync(published.archive).size / 2 ** 20;
  const grown = runs.map((run) => run.grown);
  const curl = [];
  for (const round of runs.keys()) {
    curl.push(await downloadToFile(published.address, path.join(trees, `download-${round}`)));
  }
  record(file, {
    figure: 'install-memory',
    title: 'Most memory that the tray holds above idle during that',
    unit: 'MiB',
    series: [
      { name: 'Orvanta', role: 'ours', values: grown },
      { name: 'curl to a file', role: 'peer', values: curl },
      { name: 'the archive', role: 'limit', values: [archive] },
    ],
    bar: `at most the archive and ${ALLOWED_MIB} MiB`,
    met: holds((ours) => ours <= archive + ALLOWED_MIB, median(grown)),
    note: 'the archive is held in memory until it is written; the largest program that it starts, bsdtar or curl, ' +
      `holds ${median(runs.map((run) => run.child)).toFixed(1)} MiB`,
  });
}

async function main(file) {
  const published = await publish();
  try {
    const runs = [];
    // One round takes up to twice as long as the next, of either.
    const outcome = await alternate(contendersFor(published, runs), 2 * rounds + 1);
    if (runs.length > 0) {
      recordDuration(file, outcome, runs);
      await recordMemory(file, published, runs);
    }
  } finally {
    published.server.kill();
  }
}

main(process.argv[2]);
