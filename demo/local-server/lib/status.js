// SPDX-License-Identifier: MIT
'use strict';

/** The status document; the switches `state` and `document` come on top of what is true. */
function statusDocument({ settings, switches, pairing, listener }) {
  const truth = {
    state: switches.state || pairing.state,
    mode: 'development',
    accessMode: 'local',
    workspaceId: pairing.workspaceId,
    hostname: pairing.workspaceId && `${pairing.workspaceId}.orvanta.example`,
    webAppUrl: listener.origin,
    localServer: {
      host: settings.host,
      port: listener.port,
      baseUrl: listener.origin,
      requestedPort: settings.requestedPort,
    },
    cloudflared: { running: false, healthy: false, restartCount: 0 },
  };
  return { ...truth, ...switches.document };
}

module.exports = { statusDocument };
