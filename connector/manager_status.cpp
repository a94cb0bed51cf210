// SPDX-License-Identifier: MIT
#include "connector/desktop_connector_manager.h"

#include "base/platform_error.h"
#include "platform/main_queue.h"

namespace orvanta {

namespace {

constexpr Seconds kRuntimeUpdateInterval{21'600.0};

std::optional<QUrl> parsedUrl(const std::optional<QString>& text) {
    if (!text || text->isEmpty()) {
        return std::nullopt;
    }
    const QUrl url(*text, QUrl::StrictMode);
    return url.isValid() ? std::optional(url) : std::nullopt;
}

/// Nothing, whatever the reason; the health probe decides what that means.
std::optional<TrayConnectionStatus> documentOf(const HttpReply* reply) {
    if (reply == nullptr || reply->status != 200) {
        return std::nullopt;
    }
    try {
        return TrayConnectionStatus::decode(reply->body);
    } catch (const PlatformError&) {
        return std::nullopt;
    }
}

} // namespace

void DesktopConnectorManager::startPolling() {
    MainQueue& queue = m_platform.mainQueue;
    m_pollTimer.reset();
    m_pollTimer =
        queue.repeat(Seconds(m_traySettings.statusPollIntervalSeconds), [weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->beginStatusRefresh();
            }
        });
    m_runtimeUpdateTimer.reset();
    m_runtimeUpdateTimer = queue.repeat(kRuntimeUpdateInterval, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->startOwnTask([](DesktopConnectorManager& manager) {
                return manager.checkRuntimeUpdates(false);
            });
        }
    });
}

void DesktopConnectorManager::beginStatusRefresh() {
    const auto refresh = [](std::shared_ptr<DesktopConnectorManager> self) -> Task<> {
        co_await self->refreshStatus();
    };
    beginTask([self = shared_from_this(), refresh] { return refresh(self); });
}

Task<bool> DesktopConnectorManager::refreshStatus() {
    const std::weak_ptr<ChildProcess> askedChild = m_serverProcess;
    const auto askedRuntime = m_activeRuntime;
    const auto status = co_await fetchStatus();
    if (!status) {
        const bool healthy = co_await isServerHealthy();
        if (!healthy) {
            updateStatus(std::nullopt);
        }
        co_return false;
    }
    updateStatus(status);
    // A late reply of a connector that has been replaced says nothing about its successor.
    if (askedChild.lock() == m_serverProcess && askedRuntime == m_activeRuntime) {
        confirmActiveRuntime();
    }
    co_return true;
}

void DesktopConnectorManager::confirmActiveRuntime() {
    if (m_activeRuntime && !m_activeRuntime->isLegacy) {
        runtimeUpdater().markRuntimeHealthy(m_activeRuntime);
        refreshRuntimeUpdateState();
    }
}

Task<std::optional<TrayConnectionStatus>> DesktopConnectorManager::fetchStatus() {
    const auto session = m_session;
    auto exchange = session->get(serverBaseURL() + QStringLiteral("/api/ov/status"));
    const HttpOutcome outcome = co_await std::move(exchange);
    co_return documentOf(outcome.reply());
}

void DesktopConnectorManager::updateStatus(const std::optional<TrayConnectionStatus>& status) {
    if (status) {
        if (const auto url = parsedUrl(status->webAppUrl)) {
            m_webAppBaseURL.set(*url);
        }
        const auto port = status->localServer ? status->localServer->port : std::nullopt;
        if (port && *port >= 1) {
            m_serverPort = *port;
        }
    }
    m_workspaceId.set(status ? status->workspaceId : std::nullopt);
    m_menuState.set(evaluate(status));
    m_statusText.set(orvanta::statusText(*m_menuState));
    // After a document comes its health record, a matter of files: nobody need wait for that to see
    // the state.
    m_willChange.settle();
}

} // namespace orvanta
