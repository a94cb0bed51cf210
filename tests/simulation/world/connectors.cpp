// SPDX-License-Identifier: MIT
#include "simulation/world/connectors.h"

#include "base/platform_error.h"

#include <algorithm>

namespace orvanta::simulation {

std::shared_ptr<ChildProcess> Connectors::launch(ChildProcessOptions options) {
    if (conditions[Condition::launchRefused] != 0) {
        witness->launchRefused(options.executable);
        throw PlatformError(QStringLiteral("posix"), 11,
                            QStringLiteral("Resource temporarily unavailable"));
    }
    auto connector =
        std::make_shared<Connector>(*this, ++m_lastNumber, conditions, std::move(options));
    m_living.push_back(connector);
    witness->launched(*connector);
    connector->begin();
    return connector;
}

Connector* Connectors::listenerAt(std::int64_t port) const {
    const auto found = std::find_if(m_living.begin(), m_living.end(), [port](const auto& each) {
        return port > 0 && each->port() == port;
    });
    return found == m_living.end() ? nullptr : found->get();
}

std::int64_t Connectors::freePort() {
    do {
        m_lastPort = m_lastPort >= 65'000 ? 49'152 : m_lastPort + 1;
    } while (listenerAt(m_lastPort) != nullptr);
    return m_lastPort;
}

void Connectors::standOnDefaultPort(bool isThere) {
    constexpr std::int64_t kDefaultPort = 3000;
    if (isThere && !m_stranger && listenerAt(kDefaultPort) == nullptr) {
        m_stranger =
            std::make_shared<Connector>(*this, ++m_lastNumber, Conditions(), ChildProcessOptions{});
        m_living.push_back(m_stranger);
        m_stranger->listen(kDefaultPort);
    } else if (!isThere && m_stranger) {
        m_stranger->exit(0);
        m_stranger.reset();
    }
}

void Connectors::askHost(std::int64_t port, const QByteArray& request) {
    const auto listeners = m_hosts.listeners;
    for (const auto& listener : listeners) {
        if (listener->assignedPort && *listener->assignedPort == port) {
            auto connection = std::make_shared<fakes::FakeConnection>(request);
            listener->onConnection(connection);
            witness->hostAsked(request, connection->sent);
            return;
        }
    }
}

void Connectors::forget(const Connector* connector) {
    std::erase_if(m_living, [connector](const auto& each) { return each.get() == connector; });
}

void Connectors::orphanAll() {
    for (const auto& each : m_living) {
        each->orphan();
    }
}

} // namespace orvanta::simulation
