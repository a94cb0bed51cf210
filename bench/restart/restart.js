// SPDX-License-Identifier: MIT
'use strict';

// Kills the connector with SIGKILL under each of its keepers and waits for the next one. All keepers run
// from the beginning to the end: at rest they do not disturb each other, and each connector has lived
// for longer than the second after which some of them count it as started.

const fs = require('fs');
const { rounds, alternate, medianOf, holds, record } = require('../harness/figures');
const { EventLog, pause, now, milliseconds } = require('../harness/events');
const { connector, own, makeFolder, makeState, Program, Tray, startWatcher } = require('../harness/programs');

const settledMs = 2500;

function keeper(name, role, log, program) {
  return { name, role, log, program, measure: () => killOnce(log) };
}

function ours(name, terminal) {
  const tray = new Tray(makeState(), { terminal });
  return keeper(name, 'ours', tray.log, tray);
}

function other(name, role, command, { files = {}, env = {} } = {}) {
  const folder = makeFolder('keeper');
  const log = new EventLog(`${folder}/events`);
  for (const [file, text] of Object.entries(files)) fs.writeFileSync(`${folder}/${file}`, text.replaceAll('@', folder));
  const program = new Program(command(folder), { cwd: folder, env: { BENCH_LOG: log.path, ...env } });
  return keeper(name, role, log, program);
}

function s6() {
  return other('s6', 'peer', (folder) => {
    fs.mkdirSync(`${folder}/services/connector`, { recursive: true });
    fs.symlinkSync(connector, `${folder}/services/connector/run`);
    return ['s6-svscan', `${folder}/services`];
  });
}

const supervisorSettings = `[supervisord]
nodaemon=true
logfile=/dev/null
logfile_maxbytes=0
pidfile=@/supervisord.pid
[program:connector]
command=${connector}
autorestart=true
`;

function supervisor() {
  return other('supervisord', 'peer', (folder) => ['supervisord', '-c', `${folder}/supervisord.conf`],
    { files: { 'supervisord.conf': supervisorSettings } });
}

// Its command goes and leaves a daemon behind.
function pm2() {
  return other('pm2', 'peer', () => [`${process.env.BENCH_PEERS}/node_modules/.bin/pm2`, 'start', connector,
    '--interpreter', 'none', '--restart-delay', '1000', '--name', 'connector'],
  { env: { PM2_HOME: makeFolder('pm2') } });
}

async function killOnce(log) {
  const victim = log.all().filter(({ event }) => event === 'executed').pop();
  await pause(Math.max(0, settledMs - milliseconds(victim.time, now())));
  const killed = now();
  process.kill(victim.pid, 'SIGKILL');
  return milliseconds(killed, (await log.event('executed', killed)).time);
}

// Those that have started a connector; the reasons of the others go to `absent`.
async function running(keepers, absent) {
  const there = [];
  for (const one of keepers) {
    try {
      await one.log.event('executed', 0n, 20000);
      there.push(one);
    } catch (error) {
      absent.push(`${one.name} left out: it started no connector`);
      console.log(`  ${absent.at(-1)}`);
    }
  }
  return there;
}

async function main(results) {
  await startWatcher(new EventLog(`${makeFolder('watcher')}/events`));
  const keepers = [
    ours('Orvanta', false), ours('Orvanta in the terminal', true), s6(), supervisor(), pm2(),
    other('bare loop', 'limit', () => [own('harness', 'restart_loop'), connector]),
  ];
  const absent = [];
  const { series, note } = await alternate(await running(keepers, absent), 2 * rounds);
  const limit = medianOf(series, 'limit');
  const rivals = series.filter(({ role }) => role === 'peer').map(({ name }) => medianOf(series, name));
  const met = ['Orvanta', 'Orvanta in the terminal'].every((name) =>
    holds((mine) => mine <= limit + 2 && mine < Math.min(...rivals), medianOf(series, name), limit, rivals[0]));
  record(results, {
    figure: 'restart', title: 'connector killed until its successor is executed, 1 s delay included', unit: 'ms',
    series, bar: 'limit + 2 ms at most, ahead of every peer', met,
    note: [note, ...absent].filter(Boolean).join('; '),
  });
  process.exit(0);
}

main(process.argv[2]);
