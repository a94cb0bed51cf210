// SPDX-License-Identifier: MIT
#include "unit/connector/manager_fixture.h"

namespace orvanta {

class ManagerRuntimeUpdates : public ManagerTest {
protected:
    void writeCurrentState(const QByteArray& record) {
        world.files.addFile(world.stateRoot() + QStringLiteral("/runtime/current.json"), record);
    }
};

TEST_F(ManagerRuntimeUpdates, TheShippedRuntimeIsCalledBundled) {
    manager->refreshRuntimeUpdateState();
    EXPECT_EQ(manager->runtimeUpdateStatusText(), QStringLiteral("Runtime: Bundled"));
    EXPECT_FALSE(manager->runtimeUpdateAvailable());
}

struct Rollback {
    const char* record;
    bool possible;
};

class ManagerRollback : public ManagerRuntimeUpdates,
                        public ::testing::WithParamInterface<Rollback> {};

TEST_P(ManagerRollback, ARollbackNeedsAPreviousVersion) {
    writeCurrentState(GetParam().record);
    manager->refreshRuntimeUpdateState();
    EXPECT_EQ(manager->runtimeCanRollback(), GetParam().possible);
}

INSTANTIATE_TEST_SUITE_P(
    Records, ManagerRollback,
    ::testing::Values(
        Rollback{R"({"currentVersion":"2","channel":"beta","previousVersion":"1"})", true},
        Rollback{R"({"currentVersion":"2","channel":"beta","previousVersion":""})", false},
        Rollback{R"({"currentVersion":"2","channel":"beta"})", false},
        Rollback{R"({"currentVersion":"2","previousVersion":"1"})", false},
        Rollback{"no record", false}));

TEST_F(ManagerRuntimeUpdates, ARestartReportsHealthAtTheFirstStatus) {
    startWithAnnouncedPort(8123);
    const auto result = begin(manager->restartRuntimeAndWaitForHealth());
    EXPECT_EQ(manager->statusText(), QStringLiteral("Restarting..."));
    EXPECT_TRUE(manager->restartScheduled());
    world.processes.last().exit(15);
    advance(0.5);
    ASSERT_EQ(world.processes.children.size(), 2U);
    EXPECT_EQ(portOf(1), "8123");
    answerStatusWith(kRunning);
    advance(0.499);
    EXPECT_FALSE(result->has_value());
    advance(0.001);
    EXPECT_EQ(*result, true);
}

TEST_F(ManagerRuntimeUpdates, ARestartGivesUpAfterTwentyAttempts) {
    startWithAnnouncedPort(8123);
    const auto result = begin(manager->restartRuntimeAndWaitForHealth());
    world.processes.last().exit(15);
    advance(10.499);
    EXPECT_FALSE(result->has_value());
    advance(0.001);
    EXPECT_EQ(*result, false);
    EXPECT_EQ(manager->menuState(), ConnectorMenuState::offline);
}

TEST_F(ManagerRuntimeUpdates, ARestartAtPortZeroAsksForAnyPortWithoutRetry) {
    startWithAnnouncedPort(0);
    begin(manager->restartRuntimeAndWaitForHealth());
    world.processes.last().exit(15);
    advance(0.5);
    EXPECT_EQ(portOf(1), "0");
    world.processes.last().exit(1);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.processes.children.size(), 2U);
}

} // namespace orvanta
