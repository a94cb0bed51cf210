// SPDX-License-Identifier: MIT
'use strict';

// What one redraw of the menu costs in the tray, and how many messages it puts on the session bus, when
// none, one, four or all of its entries have changed. A panel has the menu and asks for what it needs.

const { median, rounds, record } = require('../harness/figures');
const { pause } = require('../harness/events');
const { own, Program } = require('../harness/programs');
const { startPanel, busNames, ownerOf, BusMonitor } = require('../harness/desktop');

const changes = [0, 1, 4, 13];
const redraws = 50;

const names = (changed) => (changed === 13 ? 'all 13 that can change' : `${changed} changed`);

async function redraw(changed, monitor) {
  const program = new Program([own('redraw', 'redraw'), String(changed), String(redraws)], { output: 'pipe' });
  let said = '';
  const heard = {};
  program.child.stdout.on('data', (text) => {
    said += text;
    heard.begin = heard.begin || Date.now() / 1000;
    if (said.includes('end')) heard.end = Date.now() / 1000;
  });
  const isOver = () => heard.end || program.failure || program.child.exitCode !== null;
  while (!isOver()) await pause(50);
  const mine = busNames().filter((name) => ownerOf(name) === program.pid);
  await program.ended;
  const messages = monitor.messages().filter(({ time, sender, destination }) => time >= heard.begin && time <= heard.end + 0.2 &&
    (mine.includes(sender) || mine.includes(destination)) && destination !== 'org.freedesktop.DBus' &&
    sender !== 'org.freedesktop.DBus');
  const end = /end ([0-9.]+)/.exec(said);
  if (!end) throw new Error('it did not come to its end');
  return { ms: Number(end[1]), messages: messages.length / redraws };
}

async function main(results) {
  await startPanel();
  const monitor = new BusMonitor();
  await pause(500);
  const readings = changes.map(() => []);
  for (let round = 0; round < rounds; ++round) {
    for (let turn = 0; turn < changes.length; ++turn) {
      const which = (round + turn) % changes.length;
      readings[which].push(await redraw(changes[which], monitor));
    }
  }
  const series = (kind) => changes.map((changed, index) => ({
    name: names(changed), role: changed === 0 ? 'ours' : 'growth', values: readings[index].map((one) => one[kind]),
  }));
  const report = (figure, title, unit, kind, bar, met) => record(results, { figure, title, unit, series: series(kind), bar, met,
    note: changes.map((changed, index) => `${names(changed)}: ${median(readings[index].map((one) => one[kind])).toFixed(2)}`).join('; ') });
  const messages = (index) => median(readings[index].map((one) => one.messages));
  report('redraw-processor', 'processor time of one redraw of the menu, by entries changed', 'ms', 'ms', '', null);
  report('redraw-bus', 'messages on the session bus for one redraw, by entries changed', 'messages', 'messages',
    'none when nothing changed', messages(0) === 0);
  process.exit(0);
}

main(process.argv[2]).catch((error) => {
  console.log(`  not measured: ${error.message}`);
  process.exit(1);
});
