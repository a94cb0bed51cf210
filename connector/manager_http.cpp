// SPDX-License-Identifier: MIT
#include "connector/desktop_connector_manager.h"

#include "platform/main_queue.h"

namespace orvanta {

namespace {

constexpr Seconds kStatusPause{0.5};
constexpr int kStatusAttempts = 20;

} // namespace

QString DesktopConnectorManager::serverBaseURL() const {
    return QStringLiteral("http://127.0.0.1:%1").arg(m_serverPort);
}

Task<bool> DesktopConnectorManager::post(QString path) {
    const auto session = m_session;
    auto exchange = session->post(serverBaseURL() + path);
    const HttpOutcome outcome = co_await std::move(exchange);
    const HttpReply* reply = outcome.reply();
    co_return reply != nullptr && reply->status >= 200 && reply->status <= 299;
}

Task<bool> DesktopConnectorManager::isServerHealthy() {
    const auto session = m_session;
    auto exchange = session->get(serverBaseURL() + QStringLiteral("/api/ov/health"));
    const HttpOutcome outcome = co_await std::move(exchange);
    const HttpReply* reply = outcome.reply();
    co_return reply != nullptr && reply->status == 200;
}

Task<bool> DesktopConnectorManager::waitForHealthyStatusOnly() {
    for (int attempt = 0; attempt < kStatusAttempts; ++attempt) {
        co_await m_platform.mainQueue.sleep(kStatusPause);
        const bool answered = co_await refreshStatus();
        if (answered) {
            co_return true;
        }
    }
    updateStatus(std::nullopt);
    co_return false;
}

} // namespace orvanta
