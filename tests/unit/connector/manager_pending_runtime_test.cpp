// SPDX-License-Identifier: MIT
#include "unit/connector/manager_store_fixture.h"

namespace orvanta {

using ManagerPendingRuntime = ManagerStoreTest;
using Lines = std::vector<std::string>;

TEST_F(ManagerPendingRuntime, ThatComesUpIsConfirmed) {
    record("1.3.2", "1.3.1", true);
    startManager();
    EXPECT_EQ(store(), "1.3.2 1.3.1 - pending");
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
    isUp = true;
    advance(0.499);
    EXPECT_EQ(store(), "1.3.2 1.3.1 - pending");
    advance(0.001);
    EXPECT_EQ(store(), "1.3.2 1.3.1 1.3.2");
    EXPECT_EQ(launched(), Lines{"1.3.2"});
}

TEST_F(ManagerPendingRuntime, IsConfirmedByTheShippedRuntimeInItsPlace) {
    record("1.3.2", "1.3.1", true);
    world.files.remove(versionDirectory("1.3.2") + QStringLiteral("/local-server/server.js"));
    startManager();
    ASSERT_TRUE(manager->activeRuntime()->isLegacy);
    isUp = true;
    advance(0.5);
    EXPECT_EQ(store(), "1.3.2 1.3.1 1.3.2");
}

TEST_F(ManagerPendingRuntime, ThatNeverComesUpIsRolledBack) {
    record("1.3.2", "1.3.1", true);
    startManager();
    const int before = statusRequests();
    advance(9.999);
    EXPECT_EQ(store(), "1.3.2 1.3.1 - pending");
    advance(0.001);
    EXPECT_EQ(statusRequests(), before + 20);
    EXPECT_EQ(store(), "1.3.1 1.3.2 -");
    EXPECT_EQ(line(), "Runtime: Rolled back to 1.3.1.");
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
    endChild();
    isUp = true;
    advance(1);
    EXPECT_EQ(launched(), (Lines{"1.3.2", "1.3.1"}));
    EXPECT_EQ(store(), "1.3.1 1.3.2 1.3.1");
    EXPECT_EQ(manager->lastError(), std::nullopt);
}

TEST_F(ManagerPendingRuntime, WithNothingToGoBackToIsRestarted) {
    record("1.3.2", std::nullopt, true);
    startManager();
    advance(10);
    EXPECT_EQ(line(), "Runtime: No previous runtime is available.");
    EXPECT_EQ(store(), "1.3.2 - - pending");
    endChild();
    advance(0.5);
    EXPECT_EQ(launched(), (Lines{"1.3.2", "1.3.2"}));
}

TEST_F(ManagerPendingRuntime, ThatKeepsExitingIsRolledBackOnce) {
    record("1.3.2", "1.3.1", true);
    startManager();
    for (int second = 0; second < 60; ++second) {
        if (launched().back() == "1.3.2" && world.processes.last().isRunning()) {
            world.processes.last().exit(1);
        }
        advance(1);
    }
    EXPECT_GT(launched().size(), 10U);
    EXPECT_THAT(launched(), ::testing::Contains("1.3.1").Times(1));
    EXPECT_EQ(launched().back(), "1.3.1");
    EXPECT_EQ(store(), "1.3.1 1.3.2 -");
    EXPECT_EQ(line(), "Runtime: Rolled back to 1.3.1.");
}

TEST_F(ManagerPendingRuntime, AQuitDuringTheWatchDoesNotRollBack) {
    record("1.3.2", "1.3.1", true);
    startManager();
    advance(2);
    manager->handleApplicationTermination();
    advance(100);
    EXPECT_EQ(store(), "1.3.2 1.3.1 - pending");
}

TEST_F(ManagerPendingRuntime, AnUpdateWatchesItsVersionItself) {
    startStore();
    begin(manager->applyRuntimeUpdate());
    endChild();
    advance(0.5);
    ASSERT_EQ(launched(), (Lines{"1.3.2", "1.4.0"}));
    const int before = statusRequests();
    advance(5);
    EXPECT_EQ(statusRequests(), before + 10);
}

TEST_F(ManagerPendingRuntime, WithNothingToGoBackToIsWatchedByOneWatchAtATime) {
    record("1.3.2", std::nullopt, true);
    startManager();
    for (int second = 0; second < 9; ++second) {
        world.processes.last().exit(1);
        advance(1);
    }
    ASSERT_EQ(launched().size(), 10U);
    // From now on it runs and is silent: the one watch restarts it once, and then leaves it alone.
    for (int second = 0; second < 300; ++second) {
        for (const auto& child : world.processes.children) {
            if (child->terminateCount > 0 && child->isRunning()) {
                child->exit(15);
            }
        }
        advance(1);
    }
    EXPECT_EQ(launched().size(), 11U);
    EXPECT_EQ(store(), "1.3.2 - - pending");
}

TEST_F(ManagerPendingRuntime, AWatchThatIsUnwoundDoesNotStandInTheWayOfTheNext) {
    record("1.3.2", "1.3.1", true);
    startManager();
    world.queue.shutDown();
    begin(manager->validatePendingRuntimeHealth());
    advance(10);
    EXPECT_EQ(store(), "1.3.1 1.3.2 -");
}

} // namespace orvanta
