// SPDX-License-Identifier: MIT
#include "hostcontrol/host_control_server.h"

#include "hostcontrol/control_request.h"
#include "platform/environment.h"
#include "platform/main_queue.h"

namespace orvanta {
namespace {

constexpr std::size_t kLongestRequest = 16384;

Reach configuredReach(const Environment& environment) {
    const auto value = environment.variables().value("ORVANTA_HOST_CONTROL_LOOPBACK_ONLY");
    return value == "1" ? Reach::loopback : Reach::everyInterface;
}

/// Replies whatever came, and closes. On the serial queue.
void answer(const std::shared_ptr<TcpConnection>& connection, const QByteArray& received,
            const std::function<void()>& requestRestart) {
    const bool isAccepted = isRestartRequest(received);
    connection->send(controlReply(isAccepted), [connection] { connection->cancel(); });
    if (isAccepted) {
        requestRestart();
    }
}

} // namespace

HostControlServer::HostControlServer(Platform& platform)
    : m_mainQueue(platform.mainQueue), m_reach(configuredReach(platform.environment)),
      m_queue(
          platform.serialQueues.makeSerialQueue(QStringLiteral("com.orvanta.macos.host-control"))) {
}

void HostControlServer::start(std::function<void()> onRestart) {
    m_onRestart = std::move(onRestart);
    const auto weakThis = weak_from_this();
    const auto callHandler = [weakThis] {
        const auto self = weakThis.lock();
        if (self != nullptr && self->m_onRestart) {
            // A copy, because the handler may call `start`.
            const auto handler = self->m_onRestart;
            handler();
        }
    };
    const auto requestRestart = [&mainQueue = m_mainQueue, callHandler] {
        mainQueue.post(callHandler);
    };
    m_listener = m_queue->listen(m_reach, [weakThis, requestRestart](const auto& connection) {
        if (!weakThis.expired()) {
            connection->receive(kLongestRequest, [connection, requestRestart](const auto& bytes) {
                answer(connection, bytes, requestRestart);
            });
        }
    });
}

std::optional<QUrl> HostControlServer::restartURL() const {
    const auto port = m_listener ? m_listener->port() : std::nullopt;
    if (!port) {
        return std::nullopt;
    }
    return QUrl(QStringLiteral("http://127.0.0.1:%1/restart").arg(*port));
}

void HostControlServer::stop() {
    if (m_listener) {
        m_listener->cancel();
    }
    m_listener.reset();
}

} // namespace orvanta
