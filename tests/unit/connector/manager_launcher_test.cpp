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
