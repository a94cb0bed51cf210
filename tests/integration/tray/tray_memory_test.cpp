// SPDX-License-Identifier: MIT
#include "integration/tray/process_supervision.h"
#include "integration/tray/small_installation.h"

#include <cerrno>
#include <memory>

namespace orvanta::tests {
namespace {

/// The tray on a system whose memory can be declared used up: then the kernel gives it neither a
/// process nor a thread.
class TrayWithoutMemory : public SmallInstallation {
protected:
    void SetUp() override {
        SmallInstallation::SetUp();
        node = storePath(QStringLiteral("versions/1.0.0/node-runtime/node"));
    }
    void TearDown() override {
        quit();
        EXPECT_TRUE(m_supervision == nullptr || m_supervision->refusals() > 0);
    }

    /// Starts the tray; with `error`, it is without memory from the beginning.
    void startSupervised(int error = 0) {
        m_supervision = std::make_unique<ProcessSupervision>();
        m_supervision->prepare(tray);
        m_supervision->refuseWith(error);
        startTray();
        if (!m_supervision->begin(tray)) {
            m_supervision.reset();
            GTEST_SKIP() << "NOT RUN: system calls cannot be held up here.";
        }
    }

    void startAndSettleSupervised() {
        startSupervised();
        if (IsSkipped()) {
            return;
        }
        ASSERT_TRUE(waitUntil([this] { return connectorPort() > 0 && connector().answers(); }))
            << said();
        ASSERT_TRUE(waitForStatus(QStringLiteral("Not Paired")));
        ASSERT_TRUE(waitForRuntimeLine(QStringLiteral("Update available: 1.1.0"))) << said();
    }

    /// After so many more processes.
    void useMemoryUp(int error = ENOMEM, int granted = 0) {
        m_supervision->refuseWith(error, granted);
    }
    void freeMemory() { m_supervision->refuseWith(0); }
    int refusals() const { return m_supervision->refusals(); }

    qsizetype checks() { return lines().count(kUpdateAvailable); }
    bool waitForCheckAfter(qsizetype checksBefore) {
        return waitUntil([&] { return checks() > checksBefore; });
    }
    /// Whether commands are still carried out: a check says why it cannot be made.
    bool answersCommands() {
        type(QStringLiteral("Check for Runtime Updates"));
        return waitForRuntimeLine(
            QStringLiteral("Runtime manifest check failed: “/usr/bin/curl” could not be started: "
                           "Cannot allocate memory."));
    }

    void quit() {
        tray.terminate();
        EXPECT_EQ(waitForExit(), 0);
    }

    QString hostControlUrl() const {
        return connector()
            .get(QStringLiteral("/demo/environment"))
            .value(QStringLiteral("ORVANTA_HOST_CONTROL_URL"))
            .toString();
    }

    const QString kUpdateAvailable = QStringLiteral("Runtime: Update available: 1.1.0");
    QString node;

private:
    std::unique_ptr<ProcessSupervision> m_supervision;
};

const char* const kReason = "Cannot allocate memory";
/// Of an update: the manifest and the archive, a process each.
constexpr int kFetches = 2;

} // namespace

TEST_F(TrayWithoutMemory, ALaunchIsRefusedWithTheReasonAndRestartMakesUpForIt) {
    startAndSettleSupervised();
    if (IsSkipped()) {
        return;
    }
    const int first = connectorPid();
    useMemoryUp();
    killConnector();
    ASSERT_TRUE(waitForLine(refusalOf(node, kReason))) << said();
    // The program that asks for the oldest version allowed, and the connector.
    EXPECT_EQ(refusals(), 2);
    EXPECT_TRUE(childrenOf(trayPid()).empty());
    EXPECT_TRUE(waitForStatus(QStringLiteral("Offline")));
    EXPECT_TRUE(answersCommands()) << said();

    // A refused launch schedules no other, whatever there is now.
    freeMemory();
    pauseFor(2'500);
    EXPECT_TRUE(childrenOf(trayPid()).empty());
    EXPECT_EQ(starts(), 1);
    type(QStringLiteral("Restart"));
    EXPECT_TRUE(waitForNewConnector(first)) << said();
    EXPECT_TRUE(waitForStatus(QStringLiteral("Not Paired"))) << said();
}

TEST_F(TrayWithoutMemory, ARequestForARestartMakesUpForARefusedLaunchToo) {
    startAndSettleSupervised();
    if (IsSkipped()) {
        return;
    }
    const int first = connectorPid();
    const QString url = hostControlUrl();
    useMemoryUp();
    // The connector that is there is stopped all the same: what is asked for is a new one.
    const auto refused = request("POST", url);
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->status, 202);
    ASSERT_TRUE(waitForLine(refusalOf(node, kReason))) << said();
    EXPECT_TRUE(waitForStatus(QStringLiteral("Offline")));
    EXPECT_TRUE(childrenOf(trayPid()).empty());

    freeMemory();
    const auto granted = request("POST", url);
    ASSERT_TRUE(granted);
    EXPECT_EQ(granted->status, 202);
    EXPECT_TRUE(waitForNewConnector(first)) << said();
    EXPECT_TRUE(waitForStatus(QStringLiteral("Not Paired"))) << said();
}

TEST_F(TrayWithoutMemory, AnUpdateThatCannotUnpackSaysSoAndSucceedsLater) {
    // Seeding has started the worker thread, so that after manifest and archive have been fetched
    // all that is missing is the archive tool.
    startAndSettleSupervised();
    if (IsSkipped()) {
        return;
    }
    const int first = connectorPid();
    useMemoryUp(ENOMEM, kFetches);
    type(QStringLiteral("Update Desktop Connector"));
    ASSERT_TRUE(waitUntil([this] {
        return runtimeLine().startsWith(QStringLiteral("Runtime: Runtime update failed: ")) &&
               runtimeLine().endsWith(
                   QStringLiteral("could not be started: Cannot allocate memory."));
    })) << said();
    EXPECT_EQ(connectorPid(), first);
    EXPECT_TRUE(connector().answers());
    EXPECT_EQ(inState("currentVersion"), QStringLiteral("1.0.0"));

    freeMemory();
    type(QStringLiteral("Update Desktop Connector"));
    EXPECT_TRUE(waitForRuntimeLine(QStringLiteral("Updated to 1.1.0"))) << said();
    EXPECT_TRUE(waitForRunningVersion(QStringLiteral("1.1.0")));
}

/// What the kernel says to a thread; the system's library makes EAGAIN of both.
class TrayWithoutThreads : public TrayWithoutMemory, public ::testing::WithParamInterface<int> {};

TEST_P(TrayWithoutThreads, AnUpdateThatCannotHaveOneSaysSoAndSucceedsLater) {
    // With the store there already, nothing needs the worker thread before the update.
    startAndSettle();
    quit();
    const int before = connectorPid();
    const qsizetype checksBefore = checks();
    startSupervised();
    if (IsSkipped()) {
        return;
    }
    ASSERT_TRUE(waitForNewConnector(before)) << said();
    ASSERT_TRUE(waitForCheckAfter(checksBefore)) << said();
    useMemoryUp(GetParam(), kFetches);
    type(QStringLiteral("Update Desktop Connector"));
    ASSERT_TRUE(waitForRuntimeLine(
        QStringLiteral("Runtime update failed: A thread could not be started: Resource "
                       "temporarily unavailable.")))
        << said();
    EXPECT_TRUE(connector().answers());

    freeMemory();
    type(QStringLiteral("Update Desktop Connector"));
    EXPECT_TRUE(waitForRuntimeLine(QStringLiteral("Updated to 1.1.0"))) << said();
    EXPECT_TRUE(waitForRunningVersion(QStringLiteral("1.1.0")));
}

TEST_P(TrayWithoutThreads, AStartThatCannotListenSaysSoAndTheNextOneWorks) {
    startSupervised(GetParam());
    if (IsSkipped()) {
        return;
    }
    EXPECT_TRUE(waitForLine(
        QStringLiteral("A thread could not be started: Resource temporarily unavailable.")))
        << said();
    freeMemory();
    pauseFor(1'500);
    EXPECT_TRUE(childrenOf(trayPid()).empty());
    EXPECT_EQ(starts(), 0);
    quit();
    startAndSettle();
}

INSTANTIATE_TEST_SUITE_P(Refusals, TrayWithoutThreads, ::testing::Values(ENOMEM, EAGAIN),
                         [](const auto& refusal) {
                             return std::string(refusal.param == ENOMEM ? "ENOMEM" : "EAGAIN");
                         });

} // namespace orvanta::tests
