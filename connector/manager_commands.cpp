// SPDX-License-Identifier: MIT
#include "connector/desktop_connector_manager.h"

#include "base/platform_error.h"
#include "connector/dashboard_address.h"
#include "platform/browser.h"
#include "platform/login_item.h"
#include "platform/main_queue.h"

namespace orvanta {

namespace {

/// Gives the old child time to let go of its port.
constexpr Seconds kPauseBeforeRestart{0.5};

} // namespace

void DesktopConnectorManager::openDashboard() {
    m_platform.browser.open(dashboardAddress(*m_webAppBaseURL, *m_workspaceId));
}

Task<> DesktopConnectorManager::startPairing() {
    const bool ok = co_await post(QStringLiteral("/api/ov/pair/start"));
    if (ok) {
        m_lastError.set(std::nullopt);
    } else {
        m_lastError.set(QStringLiteral("Could not reach the Desktop Connector to start pairing."));
    }
}

Task<> DesktopConnectorManager::signOut() {
    const bool ok = co_await post(QStringLiteral("/api/ov/logout?unpair=1"));
    if (!ok) {
        m_lastError.set(QStringLiteral("Could not reach the Desktop Connector to sign out."));
        co_return;
    }
    m_lastError.set(std::nullopt);
    co_await refreshStatus();
}

Task<> DesktopConnectorManager::restartServer() {
    const bool ok = co_await post(QStringLiteral("/api/server/restart"));
    if (ok) {
        m_lastError.set(std::nullopt);
        m_statusText.set(QStringLiteral("Restarting..."));
        co_return;
    }
    co_await performHostManagedRestart();
}

Task<> DesktopConnectorManager::performHostManagedRestart() {
    if (m_isShuttingDown) {
        co_return;
    }
    m_statusText.set(QStringLiteral("Restarting..."));
    co_await restartOnSamePort();
}

Task<> DesktopConnectorManager::restartOnSamePort() {
    const std::int64_t port = m_serverPort;
    m_restartScheduled = true;
    stopServerProcess();
    co_await m_platform.mainQueue.sleep(kPauseBeforeRestart);
    m_restartScheduled = false;
    const bool keepPort = port >= 1;
    co_await startServerProcessAsync(keepPort ? std::optional(port) : std::nullopt, keepPort);
}

void DesktopConnectorManager::setLaunchAtLogin(bool enabled) {
    LoginItem& item = m_platform.loginItem;
    try {
        if (enabled) {
            item.registerItem();
        } else {
            item.unregisterItem();
        }
        m_launchAtLoginEnabled.set(enabled);
    } catch (const PlatformError& error) {
        m_launchAtLoginEnabled.set(item.isEnabled());
        m_lastError.set(QStringLiteral("Launch at login failed: ") + error.description());
    }
}

void DesktopConnectorManager::startHostControlServer() {
    m_hostControlServer->start([weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->startOwnTask([](DesktopConnectorManager& manager) {
                return manager.performHostManagedRestart();
            });
        }
    });
}

} // namespace orvanta
