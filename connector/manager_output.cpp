// SPDX-License-Identifier: MIT
#include "connector/desktop_connector_manager.h"

#include "connector/port_announcement.h"

namespace orvanta {

void DesktopConnectorManager::handleOutput(const QByteArray& data) {
    int announcements = 0;
    for (const QString& line : outputLines(data)) {
        const auto port = parsePort(line);
        if (!port || *port == m_serverPort) {
            continue;
        }
        m_serverPort = *port;
        ++announcements;
    }
    // Each of them asks at the port that was announced last in this piece.
    while (announcements-- > 0) {
        beginStatusRefresh();
    }
}

} // namespace orvanta
