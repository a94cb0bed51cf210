// SPDX-License-Identifier: MIT
'use strict';

// Everything that rests beside the tray. `start` answers the program; `members` the processes that count,
// given it: without what they keep alive, but with all that they run to do so.

const fs = require('fs');
const { own, connector, makeFolder, makeState, Program, Tray } = require('./programs');
const { family } = require('./processes');

const supervisorSettings = (folder) => `[supervisord]
nodaemon=true
logfile=/dev/null
logfile_maxbytes=0
pidfile=${folder}/supervisord.pid
[program:connector]
command=${connector}
autorestart=true
`;

const itself = (program) => [program.pid];

function ours(options) {
  return { start: () => new Tray(makeState(), options), members: itself };
}

function desktopProgram(...command) {
  return {
    start: () => {
      const home = makeFolder('home');
      return new Program(command, { env: {
        HOME: home, XDG_CONFIG_HOME: `${home}/.config`, XDG_DATA_HOME: `${home}/.local/share`,
        XDG_CACHE_HOME: `${home}/.cache`,
      } });
    },
    members: (program) => family(program.pid),
  };
}

const bareCore = (...parameters) => ({ start: () => new Program([own('bare', 'bare_core'), ...parameters]), members: itself });
const bareLoop = { start: () => new Program([own('bare', 'bare_loop')]), members: itself };
const bareTray = { start: () => new Program([own('bare', 'bare_tray')]), members: itself };

const supervisord = {
  start: () => {
    const folder = makeFolder('supervisord');
    fs.writeFileSync(`${folder}/supervisord.conf`, supervisorSettings(folder));
    return new Program(['supervisord', '-c', `${folder}/supervisord.conf`], { cwd: folder });
  },
  members: itself,
};

const s6 = {
  start: () => {
    const folder = makeFolder('s6');
    fs.mkdirSync(`${folder}/connector`);
    fs.symlinkSync(connector, `${folder}/connector/run`);
    return new Program(['s6-svscan', folder]);
  },
  members: (program) => family(program.pid, (name) => name.startsWith('s6-')),
};

// Its command goes and leaves a daemon behind.
const pm2 = {
  start: () => {
    const home = makeFolder('pm2');
    const command = [`${process.env.BENCH_PEERS}/node_modules/.bin/pm2`, 'start', connector, '--interpreter', 'none',
      '--name', 'connector'];
    const program = new Program(command, { env: { PM2_HOME: home } });
    const daemonFile = `${home}/pm2.pid`;
    return {
      get pid() {
        return Number(fs.readFileSync(daemonFile, 'utf8'));
      },
      end: async () => {
        await program.end();
        if (fs.existsSync(daemonFile)) process.kill(Number(fs.readFileSync(daemonFile, 'utf8')));
      },
    };
  },
  members: itself,
};

module.exports = {
  tray: ours({}), terminal: ours({ terminal: true }), bareTray, bareCore, bareLoop, supervisord, s6, pm2,
  syncthingTray: desktopProgram('syncthingtray'), keepassxc: desktopProgram('keepassxc'),
  flameshot: desktopProgram('flameshot'), qlipper: desktopProgram('qlipper'), nmApplet: desktopProgram('nm-applet'),
};
