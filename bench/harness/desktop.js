// SPDX-License-Identifier: MIT
'use strict';

// The desktop of a world: its panel, who is on its session bus, and what goes over it.

const fs = require('fs');
const path = require('path');
const { execFileSync } = require('child_process');
const { pause } = require('./events');
const { Program, makeFolder } = require('./programs');

const panelSettings = path.resolve(__dirname, '../../tests/package/panel.xml');

const busService = ['org.freedesktop.DBus', '/org/freedesktop/DBus', 'org.freedesktop.DBus'];

// The lines of the reply; undefined when there was none.
function call([service, object, itsInterface], method, ...parameters) {
  try {
    return execFileSync('dbus-send', ['--session', '--print-reply', '--reply-timeout=2000', `--dest=${service}`, object,
      `${itsInterface}.${method}`, ...parameters], { encoding: 'utf8', stdio: ['ignore', 'pipe', 'ignore'] });
  } catch (error) {
    return undefined;
  }
}

async function startPanel() {
  const folder = `${process.env.XDG_CONFIG_HOME}/xfce4/xfconf/xfce-perchannel-xml`;
  fs.mkdirSync(folder, { recursive: true });
  fs.copyFileSync(panelSettings, `${folder}/xfce4-panel.xml`);
  // Without a window manager it would wait for one.
  const panel = new Program(['xfce4-panel', '--disable-wm-check']);
  const watcher = ['org.kde.StatusNotifierWatcher', '/StatusNotifierWatcher', 'org.freedesktop.DBus.Properties'];
  for (let attempt = 0; attempt < 50; ++attempt) {
    const reply = call(watcher, 'Get', 'string:org.kde.StatusNotifierWatcher', 'string:IsStatusNotifierHostRegistered');
    if (reply && reply.includes('boolean true')) return panel;
    await pause(200);
  }
  throw new Error('the panel takes no icons');
}

// The processes that a desktop is made of, in this world.
function desktopProcesses() {
  const names = ['Xvfb', 'dbus-daemon', 'xfce4-panel', 'xfconfd'];
  return fs.readdirSync('/proc').filter((entry) => /^\d+$/.test(entry)).map(Number).filter((pid) => {
    try {
      return names.includes(fs.readFileSync(`/proc/${pid}/comm`, 'utf8').trim());
    } catch (error) {
      return false;
    }
  });
}

function busNames() {
  return [...(call(busService, 'ListNames') || '').matchAll(/string "([^"]+)"/g)].map(([, name]) => name);
}

function ownerOf(name) {
  const reply = call(busService, 'GetConnectionUnixProcessID', `string:${name}`) || '';
  return Number((/uint32 (\d+)/.exec(reply) || [])[1]);
}

// Lets the program build its menu as a host does that opens it. False when it has none on the bus.
function openMenu(pid) {
  return busNames().filter((name) => name.startsWith(':') && ownerOf(name) === pid).some((name) => {
    const menu = [name, '/MenuBar', 'com.canonical.dbusmenu'];
    return call(menu, 'AboutToShow', 'int32:0') && call(menu, 'GetLayout', 'int32:0', 'int32:-1', 'array:string:');
  });
}

// Everything that goes over the bus from its start on, one entry per message.
class BusMonitor {
  constructor() {
    this.path = `${makeFolder('bus')}/messages`;
    this.program = new Program(['dbus-monitor', '--session', '--profile'], { output: fs.openSync(this.path, 'w') });
  }

  messages() {
    return fs.readFileSync(this.path, 'utf8').split('\n').filter((line) => /^(sig|mc|mr|err)\t/.test(line)).map((line) => {
      const [type, time, , sender, destination, path, itsInterface, member] = line.split('\t');
      return { type, time: Number(time), sender, destination, path, interface: itsInterface, member };
    });
  }
}

module.exports = { startPanel, desktopProcesses, busNames, ownerOf, openMenu, BusMonitor };
