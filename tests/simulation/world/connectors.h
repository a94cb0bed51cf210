// SPDX-License-Identifier: MIT
#pragma once

#include "fakes/fake_serial_queues.h"
#include "platform/child_process.h"
#include "simulation/world/connector.h"
#include "simulation/world/world_queue.h"

#include <memory>
#include <vector>

namespace orvanta::simulation {

/// All programs that run, and the ports they listen on.
class Connectors : public ChildProcessLauncher {
public:
    Connectors(WorldQueue& mainLoop, const Conditions& ofTheWorld, fakes::FakeSerialQueues& hosts)
        : queue(mainLoop), conditions(ofTheWorld), m_hosts(hosts) {}

    std::shared_ptr<ChildProcess> launch(ChildProcessOptions options) override;

    /// Who listens on `port`; nobody for most.
    Connector* listenerAt(std::int64_t port) const;
    std::int64_t freePort();
    const std::vector<std::shared_ptr<Connector>>& living() const { return m_living; }
    /// A connector that was started by somebody else and listens on 3000; false takes it away.
    void standOnDefaultPort(bool isThere);
    /// Sends `request` to the tray's listener at `port`; nothing happens when there is none.
    void askHost(std::int64_t port, const QByteArray& request);
    void forget(const Connector* connector);
    void orphanAll();

    WorldQueue& queue;
    const Conditions& conditions;
    Witness* witness = nullptr;

private:
    fakes::FakeSerialQueues& m_hosts;
    std::vector<std::shared_ptr<Connector>> m_living;
    int m_lastNumber = 0;
    std::int64_t m_lastPort = 49'151;
    std::shared_ptr<Connector> m_stranger;
};

} // namespace orvanta::simulation
