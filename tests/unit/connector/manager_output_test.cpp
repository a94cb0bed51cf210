// SPDX-License-Identifier: MIT
#include "unit/connector/manager_fixture.h"

namespace orvanta {

class ManagerOutput : public ManagerTest {
protected:
    void SetUp() override {
        startManager();
        world.http.requests.clear();
    }
    void print(const QByteArray& chunk) {
        world.processes.last().print(chunk);
        world.queue.runUntilIdle();
    }
};

TEST_F(ManagerOutput, AnAnnouncementSetsThePortAndRefreshesOnce) {
    print("Desktop Connector running on http://127.0.0.1:52000\n");
    EXPECT_EQ(manager->serverPort(), 52'000);
    EXPECT_EQ(statusRequests(), 1);
    EXPECT_EQ(world.http.requests.front().url,
              QStringLiteral("http://127.0.0.1:52000/api/ov/status"));

    print("Desktop Connector running on http://127.0.0.1:52000\n");
    EXPECT_EQ(statusRequests(), 1);
}

TEST_F(ManagerOutput, TheRequestLeavesOnTheTurnOfTheAnnouncement) {
    world.processes.last().options.onOutput("PORT: 4001\n");
    EXPECT_EQ(statusRequests(), 1);
}

TEST_F(ManagerOutput, TwoAnnouncementsInOneChunkAskTwiceAtTheLastOfTheTwoPorts) {
    print("PORT: 4001\nPORT: 4002\n");
    EXPECT_EQ(manager->serverPort(), 4002);
    EXPECT_EQ(statusRequests(), 2);
    for (const auto& request : world.http.requests) {
        EXPECT_TRUE(request.url.startsWith(QStringLiteral("http://127.0.0.1:4002/")))
            << request.url.toStdString();
    }
}

TEST_F(ManagerOutput, AnAnnouncementSplitOverTwoChunksIsMissed) {
    print("Desktop Connector running on http://127.0");
    print(".0.1:52000\n");
    EXPECT_EQ(manager->serverPort(), 3000);
    EXPECT_EQ(statusRequests(), 0);
}

TEST_F(ManagerOutput, AnAnnouncementWithoutALineEndCounts) {
    print("noise\r\nPORT: 4001");
    EXPECT_EQ(manager->serverPort(), 4001);
}

TEST_F(ManagerOutput, CarriageReturnsNeverReachThePatterns) {
    print("PORT: 4001\r\nother\r\n");
    EXPECT_EQ(manager->serverPort(), 4001);
}

TEST_F(ManagerOutput, PortsOutOfRangeAreTakenAsTheyAre) {
    print("PORT: 0\n");
    EXPECT_EQ(manager->serverPort(), 0);
    EXPECT_EQ(manager->serverBaseURL(), QStringLiteral("http://127.0.0.1:0"));
    print("PORT: 99999\n");
    EXPECT_EQ(manager->serverPort(), 99'999);
}

TEST_F(ManagerOutput, TheAnnouncedPortOutlivesTheChild) {
    print("PORT: 4001\n");
    world.processes.last().exit(0);
    advance(1);
    EXPECT_EQ(manager->serverPort(), 4001);
}

TEST_F(ManagerOutput, OutputForAManagerThatIsGoneIsDropped) {
    manager.reset();
    print("PORT: 4001\n");
    EXPECT_EQ(statusRequests(), 0);
}

} // namespace orvanta
