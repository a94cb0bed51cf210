// SPDX-License-Identifier: MIT
#include "unit/connector/manager_fixture.h"

namespace orvanta {

using fakes::FakeRequest;

using ManagerLauncher = ManagerTest;

TEST_F(ManagerLauncher, TheChildRunsTheShippedServerInItsDirectory) {
    startManager();
    const auto& options = world.processes.last().options;
    EXPECT_EQ(options.executable, QStringLiteral("/app/resources/node-runtime/node"));
    EXPECT_EQ(options.arguments,
              QStringList{QStringLiteral("/app/resources/local-server/server.js")});
    EXPECT_EQ(options.workingDirectory, QStringLiteral("/app/resources/local-server"));
    EXPECT_EQ(manager->statusText(), QStringLiteral("Starting..."));
    EXPECT_EQ(manager->lastError(), std::nullopt);
    EXPECT_TRUE(manager->hasServerProcess());
    EXPECT_FALSE(manager->startInProgress());
    ASSERT_TRUE(manager->activeRuntime());
    EXPECT_TRUE(manager->activeRuntime()->isLegacy);
    EXPECT_EQ(manager->runtimeUpdateStatusText(),
              QStringLiteral("Runtime: Runtime updater disabled in config.json."));
}

TEST_F(ManagerLauncher, TheChildGetsOurEnvironmentWithSixVariablesSet) {
    world.environment.values = EnvironmentVariables({{"HOME", "/home/user"},
                                                     {"PORT", "99"},
                                                     {"BYTES", "\xff\xfe"},
                                                     {"EMPTY", ""},
                                                     {"ORVANTA_RUNTIME_UPDATES_ENABLED", "false"}});
    startManager();
    const std::vector<EnvironmentVariables::Variable> expected{
        {"HOME", "/home/user"},
        {"PORT", "0"},
        {"BYTES", "\xff\xfe"},
        {"EMPTY", ""},
        {"ORVANTA_RUNTIME_UPDATES_ENABLED", "false"},
        {"HOST", "127.0.0.1"},
        {"ORVANTA_RUNTIME_ROOT", "/app/resources/local-server"},
        {"ORVANTA_STATE_ROOT", "/home/user/share/Orvanta"},
        {"ORVANTA_NODE_PATH", "/app/resources/node-runtime/node"},
        {"ORVANTA_HOST_CONTROL_URL", "http://127.0.0.1:54321/restart"},
    };
    EXPECT_EQ(world.processes.last().options.environment.all(), expected);
}

TEST_F(ManagerLauncher, WithoutARestartURLAnInheritedOneIsPassedThrough) {
    world.serialQueues.nextPort.reset();
    world.environment.values.set("ORVANTA_HOST_CONTROL_URL", "http://elsewhere/restart");
    startManager();
    EXPECT_EQ(world.processes.last().variable("ORVANTA_HOST_CONTROL_URL"),
              "http://elsewhere/restart");
}

TEST_F(ManagerLauncher, WithoutARestartURLAndNoneInheritedNoneIsSet) {
    world.serialQueues.nextPort.reset();
    startManager();
    EXPECT_EQ(world.processes.last().variable("ORVANTA_HOST_CONTROL_URL"), std::nullopt);
}

struct RequestedPort {
    std::optional<std::int64_t> requested;
    QByteArray launched;
};

class ManagerLaunchPort : public ManagerTest,
                          public ::testing::WithParamInterface<RequestedPort> {};

TEST_P(ManagerLaunchPort, OnlyRealPortsAreRequested) {
    begin(manager->startServerProcessAsync(GetParam().requested, false));
    ASSERT_EQ(world.processes.children.size(), 1U);
    EXPECT_EQ(portOf(0), GetParam().launched);
}

INSTANTIATE_TEST_SUITE_P(Ports, ManagerLaunchPort,
                         ::testing::Values(RequestedPort{std::nullopt, "0"},
                                           RequestedPort{70'000, "0"}, RequestedPort{-5, "0"},
                                           RequestedPort{0, "0"}, RequestedPort{1, "1"},
                                           RequestedPort{8123, "8123"},
                                           RequestedPort{65'535, "65535"},
                                           RequestedPort{65'536, "0"}));

TEST_F(ManagerLauncher, ARunningChildBlocksAStart) {
    startManager();
    begin(manager->startServerProcessAsync(8123, true));
    EXPECT_EQ(world.processes.children.size(), 1U);
}

TEST_F(ManagerLauncher, AChildThatHasExitedUnnoticedDoesNotBlockAStart) {
    startManager();
    world.processes.last().exit(0);
    auto start = manager->startServerProcessAsync(std::nullopt, false);
    EXPECT_EQ(world.processes.children.size(), 2U);
}

TEST_F(ManagerLauncher, ShuttingDownBlocksAStart) {
    manager->handleApplicationTermination();
    begin(manager->startServerProcessAsync(std::nullopt, false));
    EXPECT_TRUE(world.processes.children.empty());
    EXPECT_EQ(manager->statusText(), QStringLiteral("Offline"));
}

TEST_F(ManagerLauncher, ANodeThatIsNotExecutableIsReportedAndNotRetried) {
    world.files.addFile(QStringLiteral("/app/resources/node-runtime/node"), "node", false);
    startManager();
    advance(100);
    EXPECT_TRUE(world.processes.children.empty());
    EXPECT_EQ(error(), QStringLiteral(
                           "Node runtime is missing from the selected Desktop Connector runtime."));
    EXPECT_TRUE(manager->activeRuntime());
    EXPECT_FALSE(manager->startInProgress());
}

TEST_F(ManagerLauncher, AMissingServerIsReportedAndNotRetried) {
    world.files.remove(QStringLiteral("/app/resources/local-server/server.js"));
    startManager();
    advance(100);
    EXPECT_TRUE(world.processes.children.empty());
    EXPECT_EQ(error(), QStringLiteral(
                           "Local server is missing from the selected Desktop Connector runtime."));
    EXPECT_TRUE(manager->activeRuntime());
    EXPECT_FALSE(manager->startInProgress());
}

TEST_F(ManagerLauncher, ARefusedLaunchIsReportedAndNotRetried) {
    world.processes.refusal = QStringLiteral("Permission denied.");
    startManager();
    advance(100);
    EXPECT_EQ(error(), QStringLiteral("Failed to start the Desktop Connector: Permission denied."));
    EXPECT_FALSE(manager->hasServerProcess());
    EXPECT_TRUE(manager->activeRuntime());
    EXPECT_FALSE(manager->startInProgress());
    EXPECT_TRUE(world.output.lines.isEmpty());
}

TEST_F(ManagerLauncher, AnyLaterStartMayMendAFailedOne) {
    world.processes.refusal = QStringLiteral("Permission denied.");
    startManager();
    world.processes.refusal.reset();
    begin(manager->startServerProcessAsync(std::nullopt, false));
    EXPECT_EQ(manager->lastError(), std::nullopt);
    EXPECT_EQ(manager->statusText(), QStringLiteral("Starting..."));
}

class ManagerExit : public ManagerTest, public ::testing::WithParamInterface<int> {};

TEST_P(ManagerExit, AnyExitIsFollowedByARestartOneSecondLater) {
    startManager();
    const QString before = manager->statusText();
    world.processes.last().exit(GetParam());
    world.queue.runUntilIdle();
    EXPECT_EQ(world.output.lines,
              QStringList{QStringLiteral("Orvanta server exited with status %1").arg(GetParam())});
    EXPECT_TRUE(manager->restartScheduled());
    EXPECT_FALSE(manager->hasServerProcess());
    EXPECT_EQ(manager->activeRuntime(), std::nullopt);
    EXPECT_EQ(manager->statusText(), before);
    advance(0.999);
    EXPECT_EQ(world.processes.children.size(), 1U);
    advance(0.001);
    EXPECT_EQ(world.processes.children.size(), 2U);
    EXPECT_EQ(portOf(1), "0");
    EXPECT_FALSE(manager->restartScheduled());
}

INSTANTIATE_TEST_SUITE_P(Statuses, ManagerExit, ::testing::Values(0, 1, 9, 255));

TEST_F(ManagerLauncher, AConnectorThatExitsAtOnceIsRestartedEverySecondForEver) {
    startManager();
    for (std::size_t launches = 1; launches <= 500; ++launches) {
        ASSERT_EQ(world.processes.children.size(), launches);
        world.processes.last().exit(1);
        advance(1);
    }
    EXPECT_EQ(world.output.lines.size(), 500);
}

TEST_F(ManagerLauncher, AFailedRequestedPortIsRetriedOnceOnAnyPort) {
    startWithAnnouncedPort(8123);
    begin(manager->performHostManagedRestart());
    world.processes.last().exit(0);
    advance(0.5);
    ASSERT_EQ(world.processes.children.size(), 2U);
    EXPECT_EQ(portOf(1), "8123");
    world.output.lines.clear();

    world.processes.last().exit(98);
    world.queue.runUntilIdle();
    ASSERT_EQ(world.processes.children.size(), 3U);
    EXPECT_EQ(portOf(2), "0");
    EXPECT_EQ(world.output.lines,
              QStringList{QStringLiteral("Orvanta server failed after requesting port 8123; "
                                         "retrying with an OS-assigned port")});

    world.processes.last().exit(7);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.output.lines.last(), QStringLiteral("Orvanta server exited with status 7"));
    EXPECT_EQ(world.processes.children.size(), 3U);
    advance(1);
    EXPECT_EQ(world.processes.children.size(), 4U);
}

TEST_F(ManagerLauncher, TheRetryHappensWhateverTheStatusWas) {
    begin(manager->startServerProcessAsync(8123, true));
    world.processes.last().exit(0);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.processes.children.size(), 2U);
}

TEST_F(ManagerLauncher, ARetryWithoutARequestedPortIsAnOrdinaryRestart) {
    begin(manager->startServerProcessAsync(70'000, true));
    world.processes.last().exit(0);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.processes.children.size(), 1U);
    EXPECT_TRUE(manager->restartScheduled());
}

TEST_F(ManagerLauncher, ARequestedPortWithoutRetryIsAnOrdinaryRestart) {
    begin(manager->startServerProcessAsync(8123, false));
    world.processes.last().exit(0);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.processes.children.size(), 1U);
    EXPECT_TRUE(manager->restartScheduled());
}

TEST_F(ManagerLauncher, AnExitDuringShutdownLeadsOnlyToTheExitLine) {
    startManager();
    manager->handleApplicationTermination();
    world.processes.last().exit(15);
    advance(10);
    EXPECT_EQ(world.output.lines,
              QStringList{QStringLiteral("Orvanta server exited with status 15")});
    EXPECT_EQ(world.processes.children.size(), 1U);
    EXPECT_FALSE(manager->restartScheduled());
}

TEST_F(ManagerLauncher, AnExitAfterTheManagerIsGoneIsStillPrinted) {
    startManager();
    manager.reset();
    world.processes.last().exit(3);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.output.lines,
              QStringList{QStringLiteral("Orvanta server exited with status 3")});
}

TEST_F(ManagerLauncher, AnExitWhileARestartIsPendingSchedulesNoSecondOne) {
    startManager();
    manager->scheduleRestart(Seconds(1));
    world.processes.last().exit(0);
    advance(0.9);
    EXPECT_EQ(world.processes.children.size(), 1U);
    advance(10);
    EXPECT_EQ(world.processes.children.size(), 2U);
}

TEST_F(ManagerLauncher, TwoPendingRestartsLeadToOneChild) {
    startManager();
    world.processes.last().exit(0);
    manager->scheduleRestart(Seconds(1));
    manager->scheduleRestart(Seconds(1));
    advance(5);
    EXPECT_EQ(world.processes.runningCount(), 1);
    EXPECT_EQ(world.processes.children.size(), 2U);
}

TEST_F(ManagerLauncher, NoRestartIsScheduledDuringShutdown) {
    manager->handleApplicationTermination();
    manager->scheduleRestart(Seconds(1));
    EXPECT_FALSE(manager->restartScheduled());
}

TEST_F(ManagerLauncher, TheLateExitOfAReplacedChildClearsItsSuccessor) {
    startWithAnnouncedPort(8123);
    begin(manager->performHostManagedRestart());
    advance(0.5);
    ASSERT_EQ(world.processes.children.size(), 2U);
    ASSERT_TRUE(manager->hasServerProcess());
    advance(9.5);

    world.processes.children.front()->exit(0);
    world.queue.runUntilIdle();
    EXPECT_FALSE(manager->hasServerProcess());
    EXPECT_EQ(manager->activeRuntime(), std::nullopt);
    EXPECT_TRUE(world.processes.children.at(1)->isRunning());
    EXPECT_EQ(world.processes.children.at(1)->terminateCount, 0);
    EXPECT_TRUE(manager->restartScheduled());
}

TEST_F(ManagerLauncher, StoppingSendsOneSignalAndForgetsTheChild) {
    startManager();
    manager->stopServerProcess();
    manager->stopServerProcess();
    EXPECT_EQ(world.processes.last().terminateCount, 1);
    EXPECT_FALSE(manager->hasServerProcess());
    EXPECT_EQ(manager->activeRuntime(), std::nullopt);
}

TEST_F(ManagerLauncher, StoppingAChildThatHasExitedSendsNoSignal) {
    startManager();
    world.processes.last().exit(0);
    manager->stopServerProcess();
    EXPECT_EQ(world.processes.last().terminateCount, 0);
    EXPECT_FALSE(manager->hasServerProcess());
    EXPECT_EQ(manager->activeRuntime(), std::nullopt);
}

TEST_F(ManagerLauncher, APendingStoreRuntimeIsWatchedAfterItsLaunch) {
    world.files.addFile(world.stateRoot() + QStringLiteral("/runtime/current.json"),
                        R"({"currentVersion":"1.0.0","channel":"beta","pendingHealthCheck":true})");
    startManager();
    const int before = statusRequests();
    advance(0.5);
    EXPECT_EQ(statusRequests(), before + 1);
    advance(0.5);
    EXPECT_EQ(statusRequests(), before + 2);
}

class NothingPending : public ManagerTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(NothingPending, AStoreWithoutAPendingRuntimeIsNotWatched) {
    world.files.addFile(world.stateRoot() + QStringLiteral("/runtime/current.json"), GetParam());
    startManager();
    const int before = statusRequests();
    advance(4);
    EXPECT_EQ(statusRequests(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Records, NothingPending,
    ::testing::Values(R"({"currentVersion":"1.0.0","channel":"beta","pendingHealthCheck":false})",
                      R"({"currentVersion":"1.0.0","channel":"beta"})",
                      R"({"currentVersion":"1.0.0","pendingHealthCheck":true})", "{", ""));

} // namespace orvanta
