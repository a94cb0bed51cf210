// SPDX-License-Identifier: MIT
'use strict';

// A tray that has heard no announcement yet looks at this port, so a connector started by hand is found.
const defaultPort = '3000';

/** What the host said through the environment. Throws when PORT is not a port number. */
function readSettings(environment) {
  const portText = environment.PORT || defaultPort;
  const requestedPort = Number(portText);
  if (!/^\d+$/.test(portText) || requestedPort > 65535) {
    throw new Error(`PORT is "${portText}", which is not a port number.`);
  }
  return {
    host: environment.HOST || '127.0.0.1',
    requestedPort,
    stateRoot: environment.ORVANTA_STATE_ROOT || null,
    hostControlUrl: environment.ORVANTA_HOST_CONTROL_URL || null,
    environment: ownVariables(environment),
  };
}

function ownVariables(environment) {
  const isOwn = (name) => name === 'PORT' || name === 'HOST' || name.startsWith('ORVANTA_');
  return Object.fromEntries(Object.entries(environment).filter(([name]) => isOwn(name)).sort());
}

module.exports = { readSettings };
