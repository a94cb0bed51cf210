// SPDX-License-Identifier: MIT
#pragma once

#include "integration/tray/connector_client.h"
#include "integration/tray/runtime_channel.h"
#include "soak/connector_journal.h"
#include "soak/user.h"

#include <QProcess>
#include <QTemporaryDir>

#include <functional>

namespace orvanta::soak {

/// A real tray in a small installation and a home of its own, following a release channel of its
/// own. Nothing here grows with the length of the run. What was started is gone when this object
/// is.
class SoakedTray {
public:
    /// Installs `executable` and starts it for `user`; waits for its first connector.
    SoakedTray(const QString& executable, User& user);
    ~SoakedTray();
    SoakedTray(const SoakedTray&) = delete;
    SoakedTray& operator=(const SoakedTray&) = delete;

    pid_t pid() const { return static_cast<pid_t>(m_tray.processId()); }
    QString stateRoot() const { return m_home.filePath(QStringLiteral("share/Orvanta")); }
    QString storePath(const QString& name) const {
        return stateRoot() + QStringLiteral("/runtime/") + name;
    }
    QStringList versions() const;
    /// A text of the store's current.json.
    QString inState(const char* member) const;

    /// Spins until `condition` holds; false after `limitMs`, or at once when the tray is gone.
    bool waitUntil(const std::function<bool()>& condition, int limitMs = 60'000);
    void pauseFor(int ms);

    /// The connector whose start is the newest in the journal.
    const ConnectorJournal& connector() const { return m_journal; }
    tests::ConnectorClient client() const { return tests::ConnectorClient(m_journal.port()); }
    /// Waits until another process than `pid` is the only child and runs a program of its own; it.
    pid_t awaitNewChild(pid_t pid);
    /// Waits until another process than `pid` runs the connector, and no other child is there.
    void awaitNewConnector(pid_t pid);
    /// Waits until the only child is the newest connector, answering, not paired, and shown so.
    void settle();
    /// How often two connectors were there at a time and both had to be ended here.
    int pairsEnded() const { return m_pairsEnded; }

    User& user;
    tests::RuntimeChannel channel;

private:
    void install(const QString& executable);
    void start();
    void write(const QString& name, const QByteArray& bytes) const;
    bool hasOneChild() const;
    void awaitOne(const std::function<bool()>& isThere, pid_t before);
    void endPair();

    QTemporaryDir m_home;
    QProcess m_tray;
    ConnectorJournal m_journal;
    int m_pairsEnded = 0;
};

} // namespace orvanta::soak
