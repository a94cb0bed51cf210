// SPDX-License-Identifier: MIT
#include "unit/connector/manager_store_fixture.h"

namespace orvanta {

using ManagerUpdate = ManagerStoreTest;
using Lines = std::vector<std::string>;

/// The status attempt that succeeds after an update.
class ManagerHealthyUpdate : public ManagerStoreTest, public ::testing::WithParamInterface<int> {};

TEST_P(ManagerHealthyUpdate, IsConfirmedAtTheFirstGoodStatus) {
    startStore();
    watchLines();
    const auto ended = begin(manager->applyRuntimeUpdate());
    EXPECT_EQ(store(), "1.4.0 1.3.2 - pending");
    EXPECT_EQ(manager->statusText(), QStringLiteral("Restarting..."));
    EXPECT_EQ(world.processes.last().terminateCount, 1);
    EXPECT_TRUE(manager->restartScheduled());
    endChild();
    advance(0.5);
    EXPECT_EQ(launched(), (Lines{"1.3.2", "1.4.0"}));
    EXPECT_EQ(portOf(1), "8123");
    EXPECT_TRUE(manager->runtimeUpdateInProgress());

    answerAfter(GetParam() - 1);
    advance(0.5 * GetParam() - 0.001);
    EXPECT_FALSE(*ended);
    EXPECT_EQ(store(), "1.4.0 1.3.2 - pending");
    advance(0.001);
    EXPECT_TRUE(*ended);
    EXPECT_EQ(store(), "1.4.0 1.3.2 1.4.0");
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
    EXPECT_FALSE(manager->runtimeUpdateAvailable());
    EXPECT_TRUE(manager->runtimeCanRollback());
    EXPECT_THAT(lines, ::testing::IsSupersetOf({"Runtime: Updating...", "Runtime: Updated"}));
    EXPECT_EQ(line(), "Runtime: Updated to 1.4.0");
    EXPECT_EQ(manager->lastError(), std::nullopt);
    EXPECT_FALSE(world.files.itemExists(versionDirectory("1.3.1")));
    EXPECT_EQ(launched(), (Lines{"1.3.2", "1.4.0"}));
}

INSTANTIATE_TEST_SUITE_P(Attempts, ManagerHealthyUpdate, ::testing::Values(1, 2, 20));

TEST_F(ManagerUpdate, ThatNeverComesUpIsRolledBack) {
    startStore();
    watchLines();
    const auto ended = begin(manager->applyRuntimeUpdate());
    endChild();
    advance(10.499);
    EXPECT_EQ(store(), "1.4.0 1.3.2 - pending");
    advance(0.001);
    EXPECT_EQ(statusRequests(), 20);
    EXPECT_EQ(store(), "1.3.2 1.4.0 -");
    EXPECT_EQ(line(), "Runtime: Rolled back to 1.3.2.");
    EXPECT_EQ(manager->statusText(), QStringLiteral("Restarting..."));
    endChild();
    advance(10.499);
    EXPECT_EQ(launched(), (Lines{"1.3.2", "1.4.0", "1.3.2"}));
    EXPECT_TRUE(manager->runtimeUpdateInProgress());
    EXPECT_FALSE(*ended);
    advance(0.001);
    EXPECT_TRUE(*ended);
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
    EXPECT_EQ(statusRequests(), 40);
    EXPECT_EQ(store(), "1.3.2 1.4.0 -");
    EXPECT_EQ(line(), "Runtime: Rolled back to 1.3.2.");
    EXPECT_THAT(lines, ::testing::Not(::testing::Contains("Runtime: Updated")));
    EXPECT_EQ(manager->menuState(), ConnectorMenuState::offline);
    EXPECT_TRUE(world.files.itemExists(versionDirectory("1.3.1")));
}

TEST_F(ManagerUpdate, ThatHadToLaunchTheShippedRuntimeConfirmsTheStoresVersion) {
    startStore();
    const auto ended = begin(manager->applyRuntimeUpdate());
    world.files.remove(versionDirectory("1.4.0") + QStringLiteral("/local-server/server.js"));
    endChild();
    isUp = true;
    advance(1);
    EXPECT_TRUE(*ended);
    EXPECT_TRUE(manager->activeRuntime()->isLegacy);
    EXPECT_EQ(store(), "1.4.0 1.3.2 1.4.0");
    EXPECT_EQ(line(), "Runtime: Runtime 1.4.0 is incomplete; using bundled runtime.");
}

TEST_F(ManagerUpdate, ARolledBackConnectorThatComesUpIsConfirmedByItsStatus) {
    startStore();
    const auto ended = begin(manager->applyRuntimeUpdate());
    endChild();
    advance(10.5);
    endChild();
    isUp = true;
    advance(1);
    EXPECT_TRUE(*ended);
    EXPECT_EQ(store(), "1.3.2 1.4.0 1.3.2");
    EXPECT_EQ(line(), "Runtime: Rolled back to 1.3.2.");
}

TEST_F(ManagerUpdate, WithNothingNewRestartsAllTheSame) {
    channel.version = QStringLiteral("1.3.2");
    startStore();
    watchLines();
    const auto ended = begin(manager->applyRuntimeUpdate());
    EXPECT_EQ(world.processes.last().terminateCount, 1);
    endChild();
    isUp = true;
    advance(1);
    EXPECT_TRUE(*ended);
    EXPECT_EQ(launched(), (Lines{"1.3.2", "1.3.2"}));
    EXPECT_EQ(store(), "1.3.2 1.3.1 1.3.2");
    EXPECT_THAT(lines, ::testing::Contains("Runtime: Updated"));
    EXPECT_EQ(line(), "Runtime: Current (1.3.2)");
}

TEST_F(ManagerUpdate, WithNothingNewAndNothingToGoBackToRestartsTwice) {
    channel.version = QStringLiteral("1.3.2");
    record("1.3.2", std::nullopt, false);
    startStore();
    const auto ended = begin(manager->applyRuntimeUpdate());
    endChild();
    advance(10.5);
    EXPECT_EQ(line(), "Runtime: No previous runtime is available.");
    endChild();
    advance(10.5);
    EXPECT_TRUE(*ended);
    EXPECT_EQ(launched(), (Lines{"1.3.2", "1.3.2", "1.3.2"}));
    EXPECT_EQ(manager->lastError(), std::nullopt);
}

TEST_F(ManagerUpdate, ThatFailsIsReportedWithoutARestart) {
    startStore();
    channel.sha256 = QString();
    const auto ended = begin(manager->applyRuntimeUpdate());
    EXPECT_TRUE(*ended);
    EXPECT_EQ(error(), QStringLiteral("Runtime archive checksum did not match the manifest."));
    EXPECT_EQ(line(), "Runtime: Runtime archive checksum did not match the manifest.");
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
    advance(30);
    EXPECT_EQ(world.processes.last().terminateCount, 0);
    EXPECT_EQ(launched(), Lines{"1.3.2"});
}

TEST_F(ManagerUpdate, OtherCommandsDuringAnUpdateDoNothing) {
    startStore();
    begin(manager->applyRuntimeUpdate());
    endChild();
    advance(0.5);
    const int before = manifestRequests();
    EXPECT_TRUE(*begin(manager->checkRuntimeUpdates(true)));
    EXPECT_TRUE(*begin(manager->applyRuntimeUpdate()));
    EXPECT_TRUE(*begin(manager->rollbackRuntime()));
    EXPECT_EQ(manifestRequests(), before);
    EXPECT_EQ(store(), "1.4.0 1.3.2 - pending");
    isUp = true;
    advance(0.5);
    EXPECT_EQ(store(), "1.4.0 1.3.2 1.4.0");
}

TEST_F(ManagerUpdate, APollDuringTheDownloadNeitherConfirmsNorPrunesTheNewVersion) {
    startStore();
    world.background.holdsJobs = true;
    begin(manager->applyRuntimeUpdate());
    isUp = true;
    begin(manager->refreshStatus());
    EXPECT_EQ(store(), "1.3.2 1.3.1 1.3.2");
    world.background.releaseOne();
    world.queue.runUntilIdle();
    // The status comes when the new version is in place, just before the record names it.
    const auto refresh = manager->refreshStatus();
    world.background.releaseOne();
    EXPECT_TRUE(world.files.itemExists(versionDirectory("1.4.0")));
    world.queue.runUntilIdle();
    EXPECT_EQ(store(), "1.4.0 1.3.2 1.3.2 pending");
    EXPECT_TRUE(world.files.itemExists(versionDirectory("1.4.0")));
}

TEST_F(ManagerUpdate, AQuitDuringTheWaitDoesNotRollBack) {
    startStore();
    const auto ended = begin(manager->applyRuntimeUpdate());
    endChild();
    advance(2);
    manager->handleApplicationTermination();
    advance(100);
    EXPECT_TRUE(*ended);
    EXPECT_EQ(store(), "1.4.0 1.3.2 - pending");
    EXPECT_EQ(launched(), (Lines{"1.3.2", "1.4.0"}));
}

TEST_F(ManagerUpdate, AQuitDuringTheDownloadStartsNothing) {
    startStore();
    world.background.holdsJobs = true;
    begin(manager->applyRuntimeUpdate());
    manager->handleApplicationTermination();
    world.background.holdsJobs = false;
    world.background.releaseOne();
    advance(100);
    EXPECT_EQ(store(), "1.4.0 1.3.2 - pending");
    EXPECT_EQ(launched(), Lines{"1.3.2"});
}

TEST_F(ManagerUpdate, OfAWatchedVersionThatIsRolledBackMeanwhileDoesNotRollForwardAgain) {
    channel.version = QStringLiteral("1.3.2");
    channel.manifestStatus = 404;
    record("1.3.2", "1.3.1", true);
    startManager();
    advance(5);
    channel.manifestStatus = 200;
    const auto ended = begin(manager->applyRuntimeUpdate()); // nothing new, but a restart
    endChild();
    advance(5);
    ASSERT_EQ(store(), "1.3.1 1.3.2 -"); // by the watch of the launch
    endChild();
    advance(30);
    EXPECT_TRUE(*ended);
    EXPECT_EQ(store(), "1.3.1 1.3.2 -");
    EXPECT_EQ(launched(), (Lines{"1.3.2", "1.3.2", "1.3.1"}));
    EXPECT_EQ(line(), "Runtime: Rolled back to 1.3.1.");
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
}

/// A connector that exits amid the wait after an update, and a mandatory update at its next launch.
class ManagerOvertakenUpdate : public ManagerStoreTest {
protected:
    void SetUp() override {
        startStore();
        ended = begin(manager->applyRuntimeUpdate());
        endChild();
        advance(8);
        configure("{}");
        channel.version = QStringLiteral("1.5.0");
        channel.minRuntimeVersion = QStringLiteral("1.5.0");
        world.processes.last().exit(1);
        advance(1);
        ASSERT_EQ(launched(), (Lines{"1.3.2", "1.4.0", "1.5.0"}));
        ASSERT_EQ(store(), "1.5.0 1.4.0 - pending");
        advance(8); // 1.4.0 has had its time
    }
    std::shared_ptr<bool> ended;
};

TEST_F(ManagerOvertakenUpdate, GivesTheNewerVersionAWaitOfItsOwn) {
    EXPECT_EQ(store(), "1.5.0 1.4.0 - pending");
    EXPECT_FALSE(*ended);
    isUp = true;
    advance(0.5);
    EXPECT_TRUE(*ended);
    EXPECT_EQ(store(), "1.5.0 1.4.0 1.5.0");
    EXPECT_EQ(launched().size(), 3U);
}

TEST_F(ManagerOvertakenUpdate, RollsTheNewerVersionBackOnceItHasFailedToo) {
    channel.manifestStatus = 404;
    advance(3.5);
    EXPECT_EQ(store(), "1.4.0 1.5.0 -");
    EXPECT_FALSE(*ended);
    endChild();
    advance(11);
    EXPECT_TRUE(*ended);
    EXPECT_EQ(store(), "1.4.0 1.5.0 -");
    EXPECT_EQ(launched(), (Lines{"1.3.2", "1.4.0", "1.5.0", "1.4.0"}));
}

} // namespace orvanta
