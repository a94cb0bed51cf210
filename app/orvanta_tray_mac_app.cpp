// SPDX-License-Identifier: MIT
#include "app/orvanta_tray_mac_app.h"

#include "connector/desktop_connector_manager.h"
#include "platform/main_queue.h"

namespace orvanta {

OrvantaTrayMacApp::OrvantaTrayMacApp(Platform& platform)
    : m_manager(std::make_shared<DesktopConnectorManager>(platform)) {
    platform.mainQueue.post([manager = m_manager] { manager->start(); });
}

} // namespace orvanta
