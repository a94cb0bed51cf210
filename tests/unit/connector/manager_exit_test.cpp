// SPDX-License-Identifier: MIT
#include "unit/connector/manager_fixture.h"

namespace orvanta {

using ManagerExits = ManagerTest;

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

TEST_F(ManagerExits, AConnectorThatExitsAtOnceIsRestartedEverySecondForEver) {
    startManager();
    for (std::size_t launches = 1; launches <= 500; ++launches) {
        ASSERT_EQ(world.processes.children.size(), launches);
        world.processes.last().exit(1);
        advance(1);
    }
    EXPECT_EQ(world.output.lines.size(), 500);
}

TEST_F(ManagerExits, AFailedRequestedPortIsRetriedOnceOnAnyPort) {
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

TEST_F(ManagerExits, TheRetryHappensWhateverTheStatusWas) {
    begin(manager->startServerProcessAsync(8123, true));
    world.processes.last().exit(0);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.processes.children.size(), 2U);
}

TEST_F(ManagerExits, ARetryWithoutARequestedPortIsAnOrdinaryRestart) {
    begin(manager->startServerProcessAsync(70'000, true));
    world.processes.last().exit(0);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.processes.children.size(), 1U);
    EXPECT_TRUE(manager->restartScheduled());
}

TEST_F(ManagerExits, ARequestedPortWithoutRetryIsAnOrdinaryRestart) {
    begin(manager->startServerProcessAsync(8123, false));
    world.processes.last().exit(0);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.processes.children.size(), 1U);
    EXPECT_TRUE(manager->restartScheduled());
}

TEST_F(ManagerExits, AChildThatWeStopIsNoFailedPort) {
    startWithAnnouncedPort(8123);
    begin(manager->performHostManagedRestart());
    world.processes.last().exit(15);
    advance(0.5);
    ASSERT_EQ(portOf(1), "8123");
    world.output.lines.clear();

    begin(manager->performHostManagedRestart());
    world.processes.last().exit(15);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.output.lines,
              QStringList{QStringLiteral("Orvanta server exited with status 15")});
    EXPECT_EQ(world.processes.children.size(), 2U);
    advance(0.5);
    EXPECT_EQ(portOf(2), "8123");
}

TEST_F(ManagerExits, AnExitDuringShutdownLeadsOnlyToTheExitLine) {
    startManager();
    manager->handleApplicationTermination();
    world.processes.last().exit(15);
    advance(10);
    EXPECT_EQ(world.output.lines,
              QStringList{QStringLiteral("Orvanta server exited with status 15")});
    EXPECT_EQ(world.processes.children.size(), 1U);
    EXPECT_FALSE(manager->restartScheduled());
}

TEST_F(ManagerExits, AnExitAfterTheManagerIsGoneIsStillPrinted) {
    startManager();
    manager.reset();
    world.processes.last().exit(3);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.output.lines,
              QStringList{QStringLiteral("Orvanta server exited with status 3")});
}

TEST_F(ManagerExits, AnExitWhileARestartIsPendingSchedulesNoSecondOne) {
    startManager();
    manager->scheduleRestart(Seconds(1));
    world.processes.last().exit(0);
    advance(0.9);
    EXPECT_EQ(world.processes.children.size(), 1U);
    advance(10);
    EXPECT_EQ(world.processes.children.size(), 2U);
}

TEST_F(ManagerExits, TwoPendingRestartsLeadToOneChild) {
    startManager();
    world.processes.last().exit(0);
    manager->scheduleRestart(Seconds(1));
    manager->scheduleRestart(Seconds(1));
    advance(5);
    EXPECT_EQ(world.processes.runningCount(), 1);
    EXPECT_EQ(world.processes.children.size(), 2U);
}

TEST_F(ManagerExits, NoRestartIsScheduledDuringShutdown) {
    manager->handleApplicationTermination();
    manager->scheduleRestart(Seconds(1));
    EXPECT_FALSE(manager->restartScheduled());
}

TEST_F(ManagerExits, TheLateExitOfAReplacedChildClearsItsSuccessor) {
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

} // namespace orvanta
