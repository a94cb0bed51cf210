// SPDX-License-Identifier: MIT
#pragma once

#include "platform/child_process.h"
#include "simulation/world/conditions.h"
#include "simulation/world/witness.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace orvanta::simulation {

class Connectors;

/// One run of the connector's program, or of another one that listens where it would.
class Connector : public ChildProcess, public std::enable_shared_from_this<Connector> {
public:
    Connector(Connectors& all, int number, Conditions habits, ChildProcessOptions options);

    bool isRunning() const override { return !m_isExitNoticed; }
    void terminate() override;

    int number() const { return m_number; }
    bool isAlive() const { return m_isAlive; }
    /// 0 while it does not listen.
    std::int64_t port() const { return m_port; }
    std::int64_t requestedPort() const { return m_requestedPort; }
    const ChildProcessOptions& options() const { return m_options; }
    const Conditions& habits() const { return m_habits; }

    /// Its life begins: boots, listens, announces.
    void begin();
    /// Listens on `port` at once, without a word.
    void listen(std::int64_t port);
    /// Changes a habit.
    void turn(Condition condition, std::int64_t value) { m_habits.set(condition, value); }
    void exit(int status);
    /// Listens somewhere else and says so.
    void move();
    /// Prints what is no announcement, or one of a port nobody asked for; see `Speech`.
    void speak(std::int64_t speech);
    void askHost(const QByteArray& request) const;
    /// The end of the tray: nobody reads its output or waits for it any more.
    void orphan();

    /// The reply to a status request, and what it means; nothing for no reply.
    QByteArray document() const;
    StatusMeaning meaning() const;

private:
    void bootDone();
    void announce();
    void print(const QByteArray& chunk, std::vector<std::int64_t> ports, std::int64_t extraDelay);
    std::int64_t otherPort() const;

    Connectors& m_all;
    int m_number;
    Conditions m_habits;
    ChildProcessOptions m_options;
    std::int64_t m_requestedPort = 0;
    std::int64_t m_port = 0;
    bool m_isAlive = true;
    bool m_isExitNoticed = false;
};

} // namespace orvanta::simulation
