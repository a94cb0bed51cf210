// SPDX-License-Identifier: MIT
'use strict';

// The memory of programs at rest, in company of none that shares libraries with them: pages that several
// programs map would otherwise count for less, and most for those with the most relatives. What runs at
// the same time is of different families: Qt 6, Qt 5, GTK, Node, Python.

const { medianOf, holds, record, rounds } = require('../harness/figures');
const { pause } = require('../harness/events');
const { memory } = require('../harness/processes');
const { copyLibraries, startWith } = require('../harness/own_libraries');
const { startPanel, openMenu, desktopProcesses } = require('../harness/desktop');
const all = require('../harness/contenders');

const restMs = 1000 * Number(process.env.BENCH_MEMORY_SECONDS || 20);
const firstStartMs = 8000;

const contender = (name, role, how, menu = false) => ({ name, role, how, menu, readings: [] });
const trays = [
  contender('Orvanta', 'ours', all.tray, true),
  contender('bare Qt tray', 'limit', all.bareTray, true),
  contender('Syncthing Tray', 'peer', all.syncthingTray, true),
  contender('KeePassXC', 'peer', all.keepassxc),
  contender('flameshot', 'peer', all.flameshot, true),
  contender('qlipper', 'peer', all.qlipper, true),
  contender('nm-applet', 'peer', all.nmApplet),
];
const keepers = [
  contender('Orvanta', 'ours', all.terminal),
  contender('bare Qt Core program with one HTTP session, libcurl', 'limit', all.bareCore('http://127.0.0.1:3999/', '60')),
  contender('the same without the session', 'other', all.bareLoop),
  contender('pm2', 'peer', all.pm2),
  contender('supervisord', 'peer', all.supervisord),
  contender('s6', 'peer', all.s6),
];
async function endAll(running) {
  await Promise.all(running.map(({ program }) => program.end()));
}

// A first start, which also leaves behind what each of them writes only once.
async function giveLibraries(contenders, desktop) {
  const running = contenders.map((one) => ({ one, program: one.how.start() }));
  await pause(firstStartMs);
  for (const { one, program } of running) attempt(one, () => { one.libraries = copyLibraries(one.how.members(program), desktop); });
  await endAll(running);
}

function attempt(one, act) {
  try {
    act();
  } catch (error) {
    one.failure = `it did not keep running (${error.message})`;
  }
}

async function measureTogether(contenders) {
  const running = contenders.filter(({ failure }) => !failure)
    .map((one) => ({ one, program: startWith(one.libraries, () => one.how.start()) }));
  await pause(restMs / 2);
  for (const { one, program } of running) {
    if (one.menu && !openMenu(program.pid)) one.failure = 'its menu is not on the session bus';
  }
  await pause(restMs / 2);
  for (const { one, program } of running) attempt(one, () => one.readings.push(memory(one.how.members(program))));
  await endAll(running);
}

const rotated = (list, by) => [...list.slice(by % list.length), ...list.slice(0, by % list.length)];

function seriesOf(contenders, kind) {
  return contenders.filter(({ failure, readings }) => !failure && readings.length > 0)
    .map(({ name, role, readings }) => ({ name, role, values: readings.map((reading) => reading[kind]) }));
}

function note(contenders) {
  return ['each as if it were alone on the desktop: with libraries of its own where the desktop does not use them',
    ...contenders.filter(({ failure }) => failure).map(({ name, failure }) => `${name} left out: ${failure}`)].join('; ');
}

function report(results, contenders, figure, title, bars) {
  for (const [kind, words, bar, isMet] of bars) {
    const series = seriesOf(contenders, kind);
    record(results, {
      figure: `${figure}-${kind}`, title: `${title}, ${words}`, unit: 'MiB', series, bar,
      met: isMet((name) => medianOf(series, name)), note: note(contenders),
    });
  }
}

function reportTrays(results) {
  const bar = '1.15 × the bare Qt tray at most, less than KeePassXC';
  const isMet = (of) => holds((mine, bare, keepass) => mine <= 1.15 * bare && mine < keepass, of('Orvanta'),
    of('bare Qt tray'), of('KeePassXC'));
  report(results, trays, 'memory-tray', 'memory at rest, tray',
    [['proportional', 'proportional set', bar, isMet], ['unique', 'unique set', bar, isMet]]);
}

// The unique set of pm2 lacks the executable of Node, which this script, run by Node too, shares with it.
function reportKeepers(results) {
  const bar = '1.3 × the bare program with one HTTP session at most';
  const isNearBare = (of) => holds((mine, bare) => mine <= 1.3 * bare, of('Orvanta'),
    of('bare Qt Core program with one HTTP session, libcurl'));
  const isBelowThird = (of) => holds((mine, daemon) => mine < daemon / 3, of('Orvanta'), of('pm2'));
  report(results, keepers, 'memory-terminal', 'memory at rest, in the terminal', [
    ['proportional', 'proportional set', `${bar}, less than a third of pm2`, (of) => isNearBare(of) && isBelowThird(of)],
    ['unique', 'unique set', `${bar} (pm2 shares Node with the harness)`, isNearBare],
  ]);
}

async function main(results) {
  await startPanel();
  await giveLibraries([...trays, ...keepers], desktopProcesses());
  for (let round = 0; round < rounds; ++round) {
    await measureTogether(rotated([...trays, ...keepers], round));
  }
  reportTrays(results);
  reportKeepers(results);
  process.exit(0);
}

main(process.argv[2]);
