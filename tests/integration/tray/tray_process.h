// SPDX-License-Identifier: MIT
#pragma once

#include "integration/tray/connector_client.h"
#include "integration/tray/process_table.h"

#include <QJsonObject>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace orvanta::tests {

/// A real tray in a home of its own, driven through its standard streams, with the demo connector
/// journaling every start and request. What it started is gone when this object is.
class TrayTest : public ::testing::Test {
protected:
    TrayTest();
    ~TrayTest() override;

    /// Starts the tray; the connector's switches are those of `switches` plus the journal.
    void startTray(const QStringList& arguments = {QStringLiteral("--terminal")});
    /// The same, and waits for the connector to answer.
    void startAndWaitForConnector();

    void type(const QString& command);
    /// Spins until `condition` holds; false after `limitMs`.
    bool waitUntil(const std::function<bool()>& condition, int limitMs = 20'000);
    bool waitForLine(const QString& line, int limitMs = 20'000);
    /// The last line printed that begins so; empty without one.
    QString lastLine(const QString& beginning);
    /// What the tray has printed, without indentation.
    QStringList lines();
    /// Waits for the tray's end; its exit code, or -1 when it is still there or was killed.
    int waitForExit(int limitMs = 10'000);

    /// Of a tray that does not run, a number that no process has: a signal to 0 would go to the
    /// tests themselves.
    pid_t trayPid() const {
        return tray.processId() > 0 ? static_cast<pid_t>(tray.processId())
                                    : std::numeric_limits<pid_t>::max();
    }
    /// The entries of the connector's journal with this event ("start", "listening", "request").
    QList<QJsonObject> journal(const QString& event) const;
    /// Where the youngest connector that ever listened does so; 0 before the first.
    int connectorPort() const;
    int connectorPid() const;
    int starts() const { return static_cast<int>(journal(QStringLiteral("start")).size()); }
    bool waitForNewConnector(int afterPid, int limitMs = 20'000);
    ConnectorClient connector() const { return ConnectorClient(connectorPort()); }
    QString stateRoot() const { return home.filePath(QStringLiteral("share/Orvanta")); }
    void writeStateFile(const QString& name, const QByteArray& bytes) const;

    QTemporaryDir home;
    QProcessEnvironment environment;
    QProcess tray;
    QJsonObject switches;
    QString executable = QStringLiteral(ORVANTA_TRAY);

private:
    void writeSwitches() const;
    void killConnectors();

    QByteArray m_output;
};

} // namespace orvanta::tests
