// SPDX-License-Identifier: MIT
'use strict';

// One long look at everything at rest, side by side: processor time, voluntary switches, messages on the
// session bus. It is told in five parts, so that the spread can be seen.

const { medianOf, holds, record } = require('../harness/figures');
const { pause } = require('../harness/events');
const { own, connector, Program } = require('../harness/programs');
const { usage } = require('../harness/processes');
const { startPanel, openMenu, busNames, ownerOf, BusMonitor } = require('../harness/desktop');
const all = require('../harness/contenders');

const windowSeconds = Number(process.env.BENCH_IDLE_SECONDS || 600);
const parts = 5;
const settleMs = 15000;
const pollSeconds = '5';
const barePort = '3901';

const bareLoop = (kind) => ({
  start: () => new Program([own('poll', 'poll_client'), kind, `http://127.0.0.1:${barePort}/api/ov/status`, pollSeconds]),
  members: (program) => [program.pid],
});

const contenders = [
  { name: 'Orvanta', role: 'ours', how: all.tray },
  { name: 'Orvanta in the terminal', role: 'ours', how: all.terminal },
  { name: 'bare Qt loop, libcurl', role: 'other', how: bareLoop('curl-loop') },
  { name: 'bare Qt loop, Qt Network', role: 'limit', how: bareLoop('qt-loop') },
  { name: 'Syncthing Tray', role: 'peer', how: all.syncthingTray },
  { name: 'pm2', role: 'peer', how: all.pm2 },
  { name: 'supervisord', role: 'peer', how: all.supervisord },
];

function sample() {
  for (const one of contenders.filter(({ failure }) => !failure)) {
    try {
      one.samples.push(usage(one.how.members(one.program)));
    } catch (error) {
      one.failure = 'it did not keep running';
    }
  }
}

async function watch() {
  sample();
  for (let part = 0; part < parts; ++part) {
    await pause(1000 * windowSeconds / parts);
    sample();
  }
}

const differences = (values) => values.slice(1).map((value, index) => value - values[index]);
const perPart = (samples, kind, scale) => differences(samples.map((one) => one[kind])).map((value) => value * scale);

function seriesOf(kind, scale) {
  return contenders.filter(({ failure }) => !failure)
    .map(({ name, role, samples }) => ({ name, role, values: perPart(samples, kind, scale) }));
}

const partSeconds = windowSeconds / parts;
const besideLibcurl = (series) => {
  const ratio = (medianOf(series, 'Orvanta') / medianOf(series, 'bare Qt loop, libcurl')).toFixed(2);
  return `${ratio} × the loop that waits for libcurl, the cheapest there is`;
};
const bothOfOurs = (series, isMet) => ['Orvanta', 'Orvanta in the terminal'].every((name) => isMet(medianOf(series, name)));

function reportProcessor(results, note) {
  const time = seriesOf('ms', 60 / partSeconds);
  record(results, {
    figure: 'idle-processor', title: 'processor time at rest, poll every 5 s', unit: 'ms/min', series: time,
    bar: '1.5 × the bare loop with the toolkit\'s own client at most',
    met: bothOfOurs(time, (mine) => holds((value, limit) => value <= 1.5 * limit, mine, medianOf(time, 'limit'))),
    note: [besideLibcurl(time), note].filter(Boolean).join('; '),
  });
  const switches = seriesOf('switches', 1 / partSeconds);
  record(results, {
    figure: 'idle-switches', title: 'voluntary switches at rest, all threads', unit: '1/s', series: switches,
    bar: 'one a second at most', met: bothOfOurs(switches, (mine) => holds((value) => value <= 1, mine)), note,
  });
}

// Messages to or from a program in the course of the window.
function reportBus(results, monitor, names, from, to) {
  const messages = monitor.messages().filter(({ time }) => time >= from && time <= to);
  const count = (own) => messages.filter(({ sender, destination }) => own.includes(sender) || own.includes(destination)).length;
  const series = [{ name: 'Orvanta', role: 'ours', values: [count(names.tray)] },
    { name: 'Syncthing Tray', role: 'peer', values: [count(names.syncthingTray)] }];
  record(results, {
    figure: 'idle-bus', title: `messages on the session bus in ${windowSeconds / 60} minutes at rest`, unit: 'messages', series,
    bar: 'none', met: names.tray.length > 0 && series[0].values[0] === 0,
    note: names.tray.length > 0 ? '' : 'the tray is not on the session bus',
  });
}

const namesOf = (pid) => busNames().filter((name) => ownerOf(name) === pid);

async function main(results) {
  await startPanel();
  new Program([connector], { env: { PORT: barePort } });
  for (const one of contenders) Object.assign(one, { samples: [], program: one.how.start() });
  await pause(settleMs / 2);
  const pidOf = (wanted) => contenders.find(({ name }) => name === wanted).program.pid;
  const tray = pidOf('Orvanta');
  const syncthingTray = pidOf('Syncthing Tray');
  openMenu(tray);
  const names = { tray: namesOf(tray), syncthingTray: namesOf(syncthingTray) };
  const monitor = new BusMonitor();
  await pause(settleMs / 2);
  const from = Date.now() / 1000;
  await watch();
  const to = Date.now() / 1000;
  reportProcessor(results, contenders.filter(({ failure }) => failure)
    .map(({ name, failure }) => `${name} left out: ${failure}`).join('; '));
  reportBus(results, monitor, names, from, to);
  process.exit(0);
}

main(process.argv[2]);
