// SPDX-License-Identifier: MIT
#include "integration/tray/resource_limit.h"
#include "integration/tray/small_installation.h"

#include <QUrl>

#include <future>
#include <optional>
#include <unistd.h>

namespace orvanta::tests {
namespace {

QString refusedLaunch(const QString& node, const char* reason) {
    return QStringLiteral("Failed to start the Desktop Connector: “%1” could not be started: %2.")
        .arg(node, QLatin1String(reason));
}

/// The tray with the shipped runtime, whatever it can read of its configuration.
class TrayExhaustion : public SmallInstallation {
protected:
    TrayExhaustion() {
        environment.insert(QStringLiteral("ORVANTA_RUNTIME_UPDATES_ENABLED"), QStringLiteral("0"));
    }

    void startWithShippedRuntime() {
        startAndWaitForConnector();
        ASSERT_TRUE(waitForStatus(QStringLiteral("Not Paired")));
        ASSERT_TRUE(
            waitForRuntimeLine(QStringLiteral("Runtime updater disabled in config.json.")));
    }

    void takeDescriptors() {
        m_descriptors.emplace(trayPid(), RLIMIT_NOFILE, lowestFreeDescriptor(trayPid()));
    }
    void giveDescriptorsBack() { m_descriptors.reset(); }

    QString shippedNode() const { return resources() + QStringLiteral("/node-runtime/node"); }

private:
    std::optional<LoweredLimit> m_descriptors;
};

} // namespace

TEST_F(TrayExhaustion, WithoutDescriptorsTheConnectorIsShownOfflineUntilThereAreSome) {
    startWithShippedRuntime();
    takeDescriptors();
    ASSERT_TRUE(waitForStatus(QStringLiteral("Offline"))) << said();
    const long before = processorTimeMs(trayPid());
    pauseFor(2'000);
    EXPECT_LT(processorTimeMs(trayPid()) - before, 1'000) << "it does not wait, it turns";
    giveDescriptorsBack();
    EXPECT_TRUE(waitForStatus(QStringLiteral("Not Paired"))) << said();
    EXPECT_EQ(starts(), 1);
    EXPECT_TRUE(connector().answers());
}

TEST_F(TrayExhaustion, WithoutDescriptorsALaunchIsRefusedWithTheReasonAndRestartMakesUpForIt) {
    startWithShippedRuntime();
    const int first = connectorPid();
    const rlim_t fewest = lowestFreeDescriptor(trayPid());
    killConnector();
    {
        // Before the launch, a second after the exit.
        const LoweredLimit none(trayPid(), RLIMIT_NOFILE, fewest);
        ASSERT_TRUE(waitForLine(refusedLaunch(shippedNode(), "Too many open files"))) << said();
        EXPECT_TRUE(childrenOf(trayPid()).empty());
    }
    type(QStringLiteral("Restart"));
    EXPECT_TRUE(waitForNewConnector(first)) << said();
    EXPECT_TRUE(waitForStatus(QStringLiteral("Not Paired"))) << said();
}

TEST_F(TrayExhaustion, ARestartAskedForWithoutDescriptorsIsAnsweredWhenThereAreSome) {
    startWithShippedRuntime();
    const int first = connectorPid();
    const QString url = connector()
                            .get(QStringLiteral("/demo/environment"))
                            .value(QStringLiteral("ORVANTA_HOST_CONTROL_URL"))
                            .toString();
    takeDescriptors();
    auto reply = std::async(std::launch::async, [url] { return request("POST", url, {}, 20'000); });
    const long before = processorTimeMs(trayPid());
    EXPECT_EQ(reply.wait_for(std::chrono::seconds(2)), std::future_status::timeout);
    EXPECT_LT(processorTimeMs(trayPid()) - before, 1'000) << "it does not wait, it turns";
    giveDescriptorsBack();
    const auto answer = reply.get();
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 202);
    EXPECT_TRUE(waitForNewConnector(first)) << said();
}

namespace {

/// The tray as a user who may have no further process, for root may have any number.
class TrayWithoutProcesses : public SmallInstallation {
protected:
    void SetUp() override {
        SmallInstallation::SetUp();
        node = versionRoot() + QStringLiteral("/node-runtime/node");
        if (::getuid() == 0) {
            ASSERT_EQ(QProcess::execute(QStringLiteral("chown"),
                                        {QStringLiteral("-R"), QStringLiteral("65534:65534"),
                                         home.path()}),
                      0);
            arguments = {QStringLiteral("--reuid=65534"), QStringLiteral("--regid=65534"),
                         QStringLiteral("--clear-groups"), executable,
                         QStringLiteral("--terminal")};
            executable = QStringLiteral("setpriv");
        }
        if (!canRun()) {
            GTEST_SKIP() << "another user cannot read the build directory";
        }
    }

    void startAndSettleAsUser() {
        startTray(arguments);
        ASSERT_TRUE(waitUntil([this] { return connectorPort() > 0 && connector().answers(); }))
            << said();
        ASSERT_TRUE(waitForStatus(QStringLiteral("Not Paired")));
        ASSERT_TRUE(waitForRuntimeLine(QStringLiteral("Update available: 1.1.0"))) << said();
    }

    void quit() {
        tray.terminate();
        ASSERT_EQ(waitForExit(), 0);
        ASSERT_TRUE(waitUntil([this] { return !isAlive(connectorPid()); }));
    }

    QString versionRoot() const { return storePath(QStringLiteral("versions/1.0.0")); }

    QString node;
    QStringList arguments{QStringLiteral("--terminal")};

private:
    bool canRun() const {
        QStringList version = arguments;
        version.last() = QStringLiteral("--version");
        return QProcess::execute(executable, version) == 0 &&
               (::getuid() != 0 ||
                QProcess::execute(executable, QStringList(arguments.mid(0, 3))
                                                  << QStringLiteral("test") << QStringLiteral("-x")
                                                  << QStringLiteral(ORVANTA_STAGED_RESOURCES
                                                                    "/node-runtime/node")) == 0);
    }
};

} // namespace

TEST_F(TrayWithoutProcesses, ALaunchIsRefusedWithTheReasonAndRestartMakesUpForIt) {
    startAndSettleAsUser();
    const int first = connectorPid();
    {
        const LoweredLimit none(trayPid(), RLIMIT_NPROC, 1);
        killConnector();
        ASSERT_TRUE(waitForLine(refusedLaunch(node, "Resource temporarily unavailable")))
            << said();
    }
    type(QStringLiteral("Restart"));
    EXPECT_TRUE(waitForNewConnector(first)) << said();
    EXPECT_TRUE(waitForStatus(QStringLiteral("Not Paired"))) << said();
}

TEST_F(TrayWithoutProcesses, AnUpdateThatCannotUnpackSaysSoAndSucceedsLater) {
    // Seeding has started the worker thread.
    startAndSettleAsUser();
    const int first = connectorPid();
    {
        const LoweredLimit none(trayPid(), RLIMIT_NPROC, 1);
        type(QStringLiteral("Update Desktop Connector"));
        ASSERT_TRUE(waitUntil([this] {
            return runtimeLine().startsWith(QStringLiteral("Runtime: Runtime update failed: ")) &&
                   runtimeLine().endsWith(
                       QStringLiteral("could not be started: Resource temporarily unavailable."));
        })) << said();
        EXPECT_EQ(connectorPid(), first);
        EXPECT_TRUE(connector().answers());
    }
    type(QStringLiteral("Update Desktop Connector"));
    EXPECT_TRUE(waitForRuntimeLine(QStringLiteral("Updated to 1.1.0"))) << said();
    EXPECT_TRUE(waitForRunningVersion(QStringLiteral("1.1.0")));
}

TEST_F(TrayWithoutProcesses, AnUpdateThatCannotHaveAThreadSaysSoAndSucceedsLater) {
    // With the store there already, nothing needs the worker thread before the update.
    startAndSettleAsUser();
    quit();
    const int before = connectorPid();
    startTray(arguments);
    ASSERT_TRUE(waitForNewConnector(before)) << said();
    ASSERT_TRUE(waitForStatus(QStringLiteral("Not Paired")));
    ASSERT_TRUE(waitForRuntimeLine(QStringLiteral("Update available: 1.1.0"))) << said();
    {
        const LoweredLimit none(trayPid(), RLIMIT_NPROC, 1);
        type(QStringLiteral("Update Desktop Connector"));
        ASSERT_TRUE(waitForRuntimeLine(
            QStringLiteral("Runtime update failed: A thread could not be started: Resource "
                           "temporarily unavailable.")))
            << said() << tray.readAllStandardError().toStdString();
    }
    type(QStringLiteral("Update Desktop Connector"));
    EXPECT_TRUE(waitForRuntimeLine(QStringLiteral("Updated to 1.1.0"))) << said();
    EXPECT_TRUE(waitForRunningVersion(QStringLiteral("1.1.0")));
}

} // namespace orvanta::tests
