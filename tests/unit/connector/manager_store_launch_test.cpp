// SPDX-License-Identifier: MIT
#include "unit/connector/manager_store_fixture.h"

namespace orvanta {

using ManagerStoreLaunch = ManagerStoreTest;

/// The connector answers when the test says, or too late.
class ManagerLateStatus : public ManagerStoreTest {
protected:
    void holdStatus() {
        world.http.respond = [this](const fakes::FakeRequest& request) {
            return request.isShared ? channel.reply(request) : std::nullopt;
        };
    }
    void answerFirst() {
        world.http.answer(0, {200, kRunning});
        world.queue.runUntilIdle();
    }
};
using Lines = std::vector<std::string>;

TEST_F(ManagerStoreLaunch, TheChildRunsTheCurrentVersion) {
    startManager();
    const auto& options = world.processes.last().options;
    EXPECT_EQ(options.executable, versionDirectory("1.3.2") + QStringLiteral("/node-runtime/node"));
    EXPECT_EQ(options.workingDirectory,
              versionDirectory("1.3.2") + QStringLiteral("/local-server"));
    EXPECT_EQ(world.processes.last().variable("ORVANTA_RUNTIME_ROOT"),
              options.workingDirectory.toUtf8());
    EXPECT_EQ(world.processes.last().variable("ORVANTA_NODE_PATH"), options.executable.toUtf8());
    EXPECT_EQ(manager->activeRuntime()->version, QStringLiteral("1.3.2"));
}

TEST_F(ManagerStoreLaunch, TheFirstStartSeedsTheStore) {
    world.files.items.erase(currentJson());
    startManager();
    EXPECT_EQ(launched(), Lines{"bootstrap"});
    EXPECT_EQ(store(), "bootstrap - -");
    EXPECT_EQ(world.background.jobCount, 1);
}

TEST_F(ManagerStoreLaunch, TheActiveVersionIsShownUntilTheUpdaterHasSomethingToSay) {
    begin(manager->startServerProcessAsync(std::nullopt, false));
    EXPECT_EQ(line(), "Runtime: 1.3.2");
    EXPECT_TRUE(manager->runtimeCanRollback());
    begin(manager->checkRuntimeUpdates(false));
    EXPECT_EQ(line(), "Runtime: Update available: 1.4.0");
}

TEST_F(ManagerStoreLaunch, EveryStatusConfirmsTheActiveVersionAndPrunes) {
    startStore();
    addVersion("1.0.0");
    EXPECT_EQ(store(), "1.3.2 1.3.1 -");
    isUp = true;
    begin(manager->refreshStatus());
    EXPECT_EQ(store(), "1.3.2 1.3.1 1.3.2");
    EXPECT_EQ(recorded().lastHealthyAt, QStringLiteral("2026-11-15T21:37:51Z"));
    EXPECT_FALSE(world.files.itemExists(versionDirectory("1.0.0")));
    world.wallClock.time = world.wallClock.time.addSecs(5);
    begin(manager->refreshStatus());
    EXPECT_EQ(recorded().lastHealthyAt, QStringLiteral("2026-11-15T21:37:56Z"));
}

TEST_F(ManagerStoreLaunch, TheStateCanBeDrawnBeforeItsConfirmationIsWritten) {
    startStore();
    isUp = true;
    std::vector<std::string> seen;
    manager->willChange().observe(
        [] {}, [&] { seen.push_back(manager->statusText().toStdString() + ", " + store()); });
    begin(manager->refreshStatus());
    EXPECT_EQ(seen, std::vector<std::string>{"Online, 1.3.2 1.3.1 -"});
    EXPECT_EQ(store(), "1.3.2 1.3.1 1.3.2");
}

TEST_F(ManagerLateStatus, OfTheVersionBeforeDoesNotConfirmTheNewOne) {
    startStore();
    holdStatus();
    const auto refreshed = begin(manager->refreshStatus());
    begin(manager->applyRuntimeUpdate());
    endChild();
    advance(0.5);
    ASSERT_EQ(launched(), (Lines{"1.3.2", "1.4.0"}));
    answerFirst();
    EXPECT_EQ(*refreshed, true);
    EXPECT_EQ(manager->menuState(), ConnectorMenuState::online);
    EXPECT_EQ(store(), "1.4.0 1.3.2 - pending");
}

TEST_F(ManagerLateStatus, OfTheChildBeforeDoesNotConfirmTheSameVersion) {
    startStore();
    holdStatus();
    begin(manager->refreshStatus());
    begin(manager->performHostManagedRestart());
    endChild();
    advance(0.5);
    ASSERT_EQ(launched(), (Lines{"1.3.2", "1.3.2"}));
    answerFirst();
    EXPECT_EQ(store(), "1.3.2 1.3.1 -");
    begin(manager->refreshStatus());
    world.http.answer(1, {200, kRunning});
    EXPECT_EQ(store(), "1.3.2 1.3.1 1.3.2");
}

TEST_F(ManagerLateStatus, AskedForBeforeTheLaunchConfirmsNothing) {
    holdStatus();
    begin(manager->refreshStatus());
    begin(manager->startServerProcessAsync(std::nullopt, false));
    ASSERT_EQ(launched(), Lines{"1.3.2"});
    answerFirst();
    EXPECT_EQ(store(), "1.3.2 1.3.1 -");
}

TEST_F(ManagerStoreLaunch, AStatusRefreshesTheRuntimeLines) {
    startStore();
    record("1.3.2", std::nullopt, false);
    ASSERT_TRUE(manager->runtimeCanRollback());
    isUp = true;
    begin(manager->refreshStatus());
    EXPECT_FALSE(manager->runtimeCanRollback());
}

TEST_F(ManagerStoreLaunch, AStatusThatFailsConfirmsNothing) {
    startStore();
    const QByteArray before = world.files.bytesOf(currentJson());
    begin(manager->refreshStatus());
    EXPECT_EQ(world.files.bytesOf(currentJson()), before);
}

TEST_F(ManagerStoreLaunch, TheShippedRuntimeAndAnAdoptedConnectorConfirmNothing) {
    isUp = true;
    channel.manifestStatus = 404;
    startManager();
    EXPECT_TRUE(world.processes.children.empty());
    EXPECT_EQ(store(), "1.3.2 1.3.1 -");

    configure(R"({"enabled":false})");
    begin(manager->startServerProcessAsync(std::nullopt, false));
    ASSERT_TRUE(manager->activeRuntime()->isLegacy);
    begin(manager->refreshStatus());
    EXPECT_EQ(store(), "1.3.2 1.3.1 -");
}

TEST_F(ManagerStoreLaunch, ARuntimeThatCannotBeResolvedIsReportedAndNotLaunched) {
    world.files.items.erase(currentJson());
    world.files.failures["moveItem"] = QStringLiteral("Disk full.");
    startManager();
    EXPECT_EQ(error(), QStringLiteral("Disk full."));
    EXPECT_TRUE(world.processes.children.empty());
    EXPECT_FALSE(manager->startInProgress());
    world.files.failures.clear();
    begin(manager->startServerProcessAsync(std::nullopt, false));
    EXPECT_EQ(manager->lastError(), std::nullopt);
    EXPECT_EQ(launched(), Lines{"bootstrap"});
}

TEST_F(ManagerStoreLaunch, ARequiredUpdateThatFailsIsReportedAndNothingIsLaunched) {
    configure("{}");
    channel.minRuntimeVersion = QStringLiteral("1.4.0");
    channel.archiveStatus = 0;
    startManager();
    EXPECT_TRUE(world.processes.children.empty());
    EXPECT_EQ(error(), QStringLiteral("Required runtime update failed: Runtime update failed: "
                                      "https://files.example/runtime.zip could not be reached."));
}

TEST_F(ManagerStoreLaunch, ARequiredUpdateRunsBeforeTheLaunchAndIsThenWatched) {
    configure("{}");
    channel.minRuntimeVersion = QStringLiteral("1.4.0");
    startManager();
    EXPECT_EQ(launched(), Lines{"1.4.0"});
    EXPECT_EQ(store(), "1.4.0 1.3.2 - pending");
    isUp = true;
    advance(0.5);
    EXPECT_EQ(store(), "1.4.0 1.3.2 1.4.0");
}

TEST_F(ManagerStoreLaunch, AStartDuringAResolutionDoesNothing) {
    world.files.items.erase(currentJson());
    world.background.holdsJobs = true;
    startManager();
    EXPECT_TRUE(manager->startInProgress());
    EXPECT_TRUE(*begin(manager->startServerProcessAsync(8123, true)));
    ASSERT_EQ(world.background.heldCount(), 1U);
    world.background.releaseOne();
    world.queue.runUntilIdle();
    EXPECT_EQ(world.processes.children.size(), 1U);
    EXPECT_EQ(portOf(0), "0");
}

TEST_F(ManagerStoreLaunch, AQuitDuringAResolutionLaunchesNothing) {
    world.files.items.erase(currentJson());
    world.background.holdsJobs = true;
    startManager();
    manager->handleApplicationTermination();
    world.background.releaseOne();
    advance(100);
    EXPECT_TRUE(world.processes.children.empty());
    EXPECT_FALSE(manager->startInProgress());
}

} // namespace orvanta
