// SPDX-License-Identifier: MIT
#include "integration/tray/resource_limit.h"
#include "integration/tray/small_installation.h"

#include <unistd.h>

namespace orvanta::tests {
namespace {

/// The tray as a user who may have no further process, for root may have any number.
class TrayWithoutProcesses : public SmallInstallation {
protected:
    void SetUp() override {
        SmallInstallation::SetUp();
        node = versionRoot() + QStringLiteral("/node-runtime/node");
        if (::getuid() == 0) {
            becomeNobody();
        }
    }

    void startAndSettleAsUser() {
        startTray(arguments);
        ASSERT_TRUE(waitUntil([this] { return connectorPort() > 0 && connector().answers(); }))
            << said();
        ASSERT_TRUE(waitForStatus(QStringLiteral("Not Paired")));
        ASSERT_TRUE(waitForRuntimeLine(QStringLiteral("Update available: 1.1.0"))) << said();
    }

    QString versionRoot() const { return storePath(QStringLiteral("versions/1.0.0")); }

    QString node;
    QStringList arguments{QStringLiteral("--terminal")};

private:
    void becomeNobody() {
        ASSERT_EQ(
            QProcess::execute(QStringLiteral("chown"),
                              {QStringLiteral("-R"), QStringLiteral("65534:65534"), home.path()}),
            0);
        if (!canRun(executable) ||
            !canRun(QStringLiteral(ORVANTA_STAGED_RESOURCES "/node-runtime/node"))) {
            GTEST_SKIP() << "as another user, nothing in the build directory can be run";
        }
        arguments = asNobody(executable) + arguments;
        executable = QStringLiteral("setpriv");
    }

    static bool canRun(const QString& file) {
        return QProcess::execute(QStringLiteral("setpriv"), asNobody(QStringLiteral("test"))
                                                                << QStringLiteral("-x")
                                                                << file) == 0;
    }
    static QStringList asNobody(const QString& program) {
        return {QStringLiteral("--reuid=65534"), QStringLiteral("--regid=65534"),
                QStringLiteral("--clear-groups"), program};
    }
};

} // namespace

TEST_F(TrayWithoutProcesses, ALaunchIsRefusedWithTheReasonAndRestartMakesUpForIt) {
    startAndSettleAsUser();
    const int first = connectorPid();
    {
        const LoweredLimit none(trayPid(), RLIMIT_NPROC, 1);
        killConnector();
        ASSERT_TRUE(waitForLine(refusalOf(node, "Resource temporarily unavailable"))) << said();
    }
    type(QStringLiteral("Restart"));
    EXPECT_TRUE(waitForNewConnector(first)) << said();
    EXPECT_TRUE(waitForStatus(QStringLiteral("Not Paired"))) << said();
}

TEST_F(TrayWithoutProcesses, AnUpdateThatCannotBeFetchedSaysSoAndSucceedsLater) {
    startAndSettleAsUser();
    const int first = connectorPid();
    {
        const LoweredLimit none(trayPid(), RLIMIT_NPROC, 1);
        type(QStringLiteral("Update Desktop Connector"));
        ASSERT_TRUE(waitForRuntimeLine(
            QStringLiteral("Runtime manifest check failed: “/usr/bin/curl” could not be started: "
                           "Resource temporarily unavailable.")))
            << said();
        EXPECT_EQ(connectorPid(), first);
        EXPECT_TRUE(connector().answers());
    }
    type(QStringLiteral("Update Desktop Connector"));
    EXPECT_TRUE(waitForRuntimeLine(QStringLiteral("Updated to 1.1.0"))) << said();
    EXPECT_TRUE(waitForRunningVersion(QStringLiteral("1.1.0")));
}

} // namespace orvanta::tests
