// SPDX-License-Identifier: MIT
#include "unit/connector/manager_fixture.h"

namespace orvanta {

using fakes::FakeRequest;

using ManagerHttp = ManagerTest;

TEST_F(ManagerHttp, TheBaseAddressIsTheLoopbackNumberAndThePort) {
    EXPECT_EQ(manager->serverBaseURL(), QStringLiteral("http://127.0.0.1:3000"));
}

struct PostReply {
    int status;
    bool ok;
};

class ManagerPost : public ManagerTest, public ::testing::WithParamInterface<PostReply> {};

TEST_P(ManagerPost, OnlyStatuses200To299Succeed) {
    world.http.respond = [](const FakeRequest&) { return HttpReply{GetParam().status, "ignored"}; };
    const auto result = begin(manager->post(QStringLiteral("/api/ov/logout?unpair=1")));
    EXPECT_EQ(*result, GetParam().ok);
    ASSERT_EQ(world.http.requests.size(), 1U);
    EXPECT_EQ(world.http.requests.front().method, "POST");
    EXPECT_EQ(world.http.requests.front().url,
              QStringLiteral("http://127.0.0.1:3000/api/ov/logout?unpair=1"));
    EXPECT_EQ(manager->lastError(), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Statuses, ManagerPost,
                         ::testing::Values(PostReply{0, false}, PostReply{199, false},
                                           PostReply{200, true}, PostReply{204, true},
                                           PostReply{299, true}, PostReply{300, false},
                                           PostReply{302, false}, PostReply{404, false},
                                           PostReply{500, false}));

class ManagerHealth : public ManagerTest, public ::testing::WithParamInterface<PostReply> {};

TEST_P(ManagerHealth, OnlyStatus200IsHealthy) {
    world.http.respond = [](const FakeRequest&) { return HttpReply{GetParam().status, "{bad"}; };
    const auto result = begin(manager->isServerHealthy());
    EXPECT_EQ(*result, GetParam().ok);
    EXPECT_EQ(world.http.urls(),
              std::vector{QStringLiteral("http://127.0.0.1:3000/api/ov/health")});
}

INSTANTIATE_TEST_SUITE_P(Statuses, ManagerHealth,
                         ::testing::Values(PostReply{0, false}, PostReply{200, true},
                                           PostReply{201, false}, PostReply{204, false},
                                           PostReply{299, false}, PostReply{404, false}));

TEST_F(ManagerHttp, TheWaitEndsAtTheFirstGoodStatus) {
    const auto result = begin(manager->waitForHealthyStatusOnly());
    advance(9.9);
    EXPECT_EQ(statusRequests(), 19);
    EXPECT_FALSE(result->has_value());
    answerStatusWith(kRunning);
    advance(0.1);
    EXPECT_EQ(statusRequests(), 20);
    EXPECT_EQ(*result, true);
    EXPECT_EQ(manager->menuState(), ConnectorMenuState::online);
}

TEST_F(ManagerHttp, TheWaitPausesHalfASecondBeforeEachFetch) {
    begin(manager->waitForHealthyStatusOnly());
    EXPECT_EQ(statusRequests(), 0);
    advance(0.499);
    EXPECT_EQ(statusRequests(), 0);
    advance(0.001);
    EXPECT_EQ(statusRequests(), 1);
}

TEST_F(ManagerHttp, TheWaitGivesUpAfterExactlyTwentyFetchesAndPublishesOffline) {
    // Healthy without a document: only the end of the wait publishes anything.
    manager->updateStatus(TrayConnectionStatus::decode(kRunning));
    world.http.respond = [](const FakeRequest& request) {
        return HttpReply{request.url.endsWith(QStringLiteral("health")) ? 200 : 500, {}};
    };
    const auto result = begin(manager->waitForHealthyStatusOnly());
    advance(9.999);
    EXPECT_EQ(manager->menuState(), ConnectorMenuState::online);
    advance(100);
    EXPECT_EQ(statusRequests(), 20);
    EXPECT_EQ(*result, false);
    EXPECT_EQ(manager->menuState(), ConnectorMenuState::offline);
    EXPECT_TRUE(world.processes.children.empty());
}

TEST_F(ManagerHttp, ARequestKeepsThePortItWasBuiltWith) {
    world.http.respond = [](const FakeRequest&) { return std::nullopt; };
    const auto result = begin(manager->post(QStringLiteral("/x")));
    manager->handleOutput("PORT: 4001\n");
    world.http.answer(0, {200, {}});
    EXPECT_EQ(*result, true);
    EXPECT_EQ(world.http.requests.front().url, QStringLiteral("http://127.0.0.1:3000/x"));
}

} // namespace orvanta
