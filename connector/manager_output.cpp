// SPDX-License-Identifier: MIT
#include "connector/desktop_connector_manager.h"

#include "connector/port_announcement.h"

namespace orvanta {

void DesktopConnectorManager::handleOutput(const QByteArray& data) {
    for (const QString& line : outputLines(data)) {
        const auto port = parsePort(line);
        if (!port || *port == m_serverPort) {
            continue;
        }
        m_serverPort = *port;
        startStatusRefresh();
    }
}

} // namespace orvanta
