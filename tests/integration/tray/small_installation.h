// SPDX-License-Identifier: MIT
#pragma once

#include "integration/tray/copied_tray.h"
#include "integration/tray/tray_update.h"

#include <csignal>

namespace orvanta::tests {

/// An installation whose shipped runtime, version 1.0.0, is small: its node only calls the staged
/// one. Version 1.1.0 is on the channel.
class SmallInstallation : public TrayUpdate {
protected:
    void SetUp() override {
        TrayUpdate::SetUp();
        executable =
            copyTray(QStringLiteral(ORVANTA_TRAY), home.filePath(QStringLiteral("prefix")));
        ASSERT_NE(executable, QString());
        QDir().mkpath(home.filePath(QStringLiteral("prefix/share")));
        ASSERT_FALSE(
            channel.makeRuntime(QStringLiteral("shipped"), QStringLiteral("1.0.0")).isEmpty());
        ASSERT_TRUE(QDir().rename(channel.path(QStringLiteral("shipped")), resources()));
        ASSERT_TRUE(channel.publish(QStringLiteral("1.1.0")));
    }

    QString resources() const { return home.filePath(QStringLiteral("prefix/share/orvanta")); }

    void startAndSettle() {
        startAndWaitForConnector();
        ASSERT_TRUE(waitForStatus(QStringLiteral("Not Paired")));
        ASSERT_TRUE(waitForRuntimeLine(QStringLiteral("Update available: 1.1.0")));
    }

    /// Kills the tray's only child and waits until the tray has seen that.
    void killConnector() {
        const std::vector<pid_t> children = childrenOf(trayPid());
        ASSERT_EQ(children.size(), 1U);
        ::kill(children.front(), SIGKILL);
        ASSERT_TRUE(waitForLine(QStringLiteral("Orvanta server exited with status 9"))) << said();
    }

    /// Waits for a child other than `pid`, whether it answers or not.
    bool waitForNewChild(pid_t pid) {
        return waitUntil([&] {
            const std::vector<pid_t> children = childrenOf(trayPid());
            return children.size() == 1 && children.front() != pid;
        });
    }

    bool waitForStatus(const QString& text, int limitMs = 20'000) {
        return waitUntil(
            [&] {
                return lastLine(QStringLiteral("Status:")) == QStringLiteral("Status: ") + text;
            },
            limitMs);
    }
    void pauseFor(int ms) {
        waitUntil([] { return false; }, ms);
    }
    /// The whole line about a connector whose `node` the system would not start, for that `reason`.
    static QString refusalOf(const QString& node, const char* reason) {
        return QStringLiteral(
                   "Failed to start the Desktop Connector: “%1” could not be started: %2.")
            .arg(node, QLatin1String(reason));
    }
    std::string said() { return lines().join(QLatin1Char('\n')).toStdString(); }
};

} // namespace orvanta::tests
