// SPDX-License-Identifier: MIT
#include "unit/connector/manager_store_fixture.h"

namespace orvanta {

using ManagerCheck = ManagerStoreTest;
using ManagerUpdate = ManagerStoreTest;
using ManagerRollbackCommand = ManagerStoreTest;
using Lines = std::vector<std::string>;

TEST_F(ManagerCheck, ShowsWhatTheChannelOffers) {
    startStore();
    watchLines();
    const auto ended = begin(manager->checkRuntimeUpdates(true));
    EXPECT_TRUE(*ended);
    EXPECT_EQ(line(), "Runtime: Update available: 1.4.0");
    EXPECT_THAT(lines, ::testing::Contains("Runtime: Checking..."));
    EXPECT_TRUE(manager->runtimeUpdateAvailable());
    EXPECT_TRUE(manager->runtimeCanRollback());
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
    EXPECT_EQ(manager->lastError(), std::nullopt);

    channel.version = QStringLiteral("1.3.2");
    begin(manager->checkRuntimeUpdates(true));
    EXPECT_EQ(line(), "Runtime: Current (1.3.2)");
    EXPECT_FALSE(manager->runtimeUpdateAvailable());
}

TEST_F(ManagerCheck, ASecondOneDuringTheFirstDoesNothing) {
    startStore();
    world.http.respond = [](const fakes::FakeRequest&) { return std::nullopt; };
    const auto first = begin(manager->checkRuntimeUpdates(true));
    EXPECT_TRUE(manager->runtimeUpdateInProgress());
    EXPECT_EQ(line(), "Runtime: Checking...");
    EXPECT_TRUE(*begin(manager->checkRuntimeUpdates(true)));
    EXPECT_TRUE(*begin(manager->applyRuntimeUpdate()));
    EXPECT_TRUE(*begin(manager->rollbackRuntime()));
    EXPECT_EQ(manifestRequests(), 1);
    EXPECT_EQ(store(), "1.3.2 1.3.1 -");
    EXPECT_FALSE(*first);
    world.http.answer(0, {200, channel.manifest()});
    EXPECT_TRUE(*first);
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
}

TEST_F(ManagerCheck, AFailureIsAnErrorOnlyWhenAskedFor) {
    startStore();
    begin(manager->startPairing());
    const QString before = error();
    channel.manifestStatus = 404;
    begin(manager->checkRuntimeUpdates(false));
    EXPECT_EQ(error(), before);
    EXPECT_EQ(line(), "Runtime: Runtime manifest was not available.");
    begin(manager->checkRuntimeUpdates(true));
    EXPECT_EQ(error(), QStringLiteral("Runtime manifest was not available."));
    EXPECT_EQ(line(), "Runtime: Runtime manifest was not available.");
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
}

TEST_F(ManagerCheck, ASuccessLeavesAnEarlierErrorAlone) {
    startStore();
    begin(manager->startPairing());
    const QString before = error();
    begin(manager->checkRuntimeUpdates(true));
    EXPECT_EQ(error(), before);
}

TEST_F(ManagerCheck, RunsAtTheStartAndEverySixHours) {
    startManager();
    EXPECT_EQ(manifestRequests(), 1);
    EXPECT_EQ(line(), "Runtime: Update available: 1.4.0");
    advance(21'599);
    EXPECT_EQ(manifestRequests(), 1);
    advance(1);
    EXPECT_EQ(manifestRequests(), 2);
    EXPECT_EQ(manager->lastError(), std::nullopt);
}

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

TEST_F(ManagerRollbackCommand, RestartsOntoThePreviousVersion) {
    startStore();
    watchLines();
    const auto ended = begin(manager->rollbackRuntime());
    EXPECT_EQ(line(), "Runtime: Rolling back...");
    EXPECT_EQ(store(), "1.3.1 1.3.2 -");
    EXPECT_TRUE(manager->runtimeUpdateInProgress());
    endChild();
    advance(0.5);
    EXPECT_EQ(launched(), (Lines{"1.3.2", "1.3.1"}));
    EXPECT_FALSE(*ended);
    isUp = true;
    advance(0.5);
    EXPECT_TRUE(*ended);
    EXPECT_EQ(line(), "Runtime: Rolled back to 1.3.1.");
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
    EXPECT_EQ(manager->lastError(), std::nullopt);
}

TEST_F(ManagerRollbackCommand, ConfirmsNothingByItself) {
    startStore();
    const auto ended = begin(manager->rollbackRuntime());
    endChild();
    advance(10.5);
    EXPECT_TRUE(*ended);
    EXPECT_EQ(store(), "1.3.1 1.3.2 -");
    EXPECT_EQ(launched(), (Lines{"1.3.2", "1.3.1"}));
    EXPECT_EQ(line(), "Runtime: Rolled back to 1.3.1.");
}

TEST_F(ManagerRollbackCommand, WithoutAPreviousVersionIsReportedWithoutARestart) {
    record("1.3.2", std::nullopt, false);
    startStore();
    const auto ended = begin(manager->rollbackRuntime());
    EXPECT_TRUE(*ended);
    EXPECT_EQ(line(), "Runtime: No previous runtime is available.");
    EXPECT_EQ(error(), QStringLiteral("No previous runtime is available."));
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
    EXPECT_FALSE(manager->runtimeCanRollback());
    advance(30);
    EXPECT_EQ(world.processes.last().terminateCount, 0);
}

} // namespace orvanta
