// SPDX-License-Identifier: MIT
#include "unit/connector/manager_fixture.h"

namespace orvanta {

using fakes::FakeRequest;

using ManagerStatus = ManagerTest;

TEST_F(ManagerStatus, TheFirstPollComesOneWholeIntervalAfterTheStart) {
    manager->startPolling();
    advance(4.999);
    EXPECT_EQ(statusRequests(), 0);
    advance(0.001);
    EXPECT_EQ(statusRequests(), 1);
    advance(5);
    EXPECT_EQ(statusRequests(), 2);
}

TEST_F(ManagerStatus, PollingAgainReplacesBothTimers) {
    manager->startPolling();
    advance(3);
    manager->startPolling();
    EXPECT_EQ(world.queue.repeatingTimerCount(), 2U);
    advance(4.999);
    EXPECT_EQ(statusRequests(), 0);
    advance(0.001);
    EXPECT_EQ(statusRequests(), 1);
}

TEST_F(ManagerStatus, ThePollFollowsTheConfiguredInterval) {
    world.files.addFile(world.configPath(), R"({"tray":{"statusPollIntervalSeconds":0.25}})");
    startManager();
    const int before = statusRequests();
    advance(10);
    EXPECT_EQ(statusRequests(), before + 40);
}

TEST_F(ManagerStatus, ATickDoesNotWaitForTheOneBefore) {
    world.http.respond = [](const FakeRequest&) { return std::nullopt; };
    manager->startPolling();
    advance(15);
    EXPECT_EQ(statusRequests(), 3);
}

TEST_F(ManagerStatus, OfOverlappingRefreshesTheLastToFinishWins) {
    world.http.respond = [](const FakeRequest&) { return std::nullopt; };
    manager->startPolling();
    advance(10);
    world.http.answer(1, {200, R"({"state":"NEEDS_PAIRING"})"});
    EXPECT_EQ(manager->menuState(), ConnectorMenuState::notPaired);
    world.http.answer(0, {200, kRunning});
    EXPECT_EQ(manager->menuState(), ConnectorMenuState::online);
}

TEST_F(ManagerStatus, ADocumentIsPublished) {
    answerStatusWith(R"({"state":"RUNNING","workspaceId":"w42","webAppUrl":"https://w.example/x",
                         "localServer":{"port":4001}})");
    const auto result = begin(manager->refreshStatus());
    EXPECT_EQ(*result, true);
    EXPECT_EQ(manager->menuState(), ConnectorMenuState::online);
    EXPECT_EQ(manager->statusText(), QStringLiteral("Online"));
    EXPECT_EQ(manager->workspaceId(), QStringLiteral("w42"));
    EXPECT_EQ(manager->webAppBaseURL(), QUrl(QStringLiteral("https://w.example/x")));
    EXPECT_EQ(manager->serverPort(), 4001);
    EXPECT_EQ(healthRequests(), 0);
}

TEST_F(ManagerStatus, ADeadServerIsOfflineAndKeepsItsAddresses) {
    answerStatusWith(R"({"state":"RUNNING","workspaceId":"w42","webAppUrl":"https://w.example",
                         "localServer":{"port":4001}})");
    begin(manager->refreshStatus());
    world.http.respond = fakes::FakeHttp::refuse;
    const auto result = begin(manager->refreshStatus());
    EXPECT_EQ(*result, false);
    EXPECT_EQ(manager->menuState(), ConnectorMenuState::offline);
    EXPECT_EQ(manager->statusText(), QStringLiteral("Offline"));
    EXPECT_EQ(manager->workspaceId(), std::nullopt);
    EXPECT_EQ(manager->webAppBaseURL(), QUrl(QStringLiteral("https://w.example")));
    EXPECT_EQ(manager->serverPort(), 4001);
}

struct UnusableStatus {
    int status;
    QByteArray body;
};

class ManagerUnusableStatus : public ManagerTest,
                              public ::testing::WithParamInterface<UnusableStatus> {};

TEST_P(ManagerUnusableStatus, AHealthyServerWithoutAUsableDocumentChangesNothing) {
    answerStatusWith(R"({"state":"RUNNING","workspaceId":"w42"})");
    begin(manager->refreshStatus());
    const UnusableStatus unusable = GetParam();
    world.http.respond = [unusable](const FakeRequest& request) {
        return request.url.endsWith(QStringLiteral("health"))
                   ? HttpReply{200, "{"}
                   : HttpReply{unusable.status, unusable.body};
    };
    const auto result = begin(manager->refreshStatus());
    EXPECT_EQ(*result, false);
    EXPECT_EQ(manager->menuState(), ConnectorMenuState::online);
    EXPECT_EQ(manager->workspaceId(), QStringLiteral("w42"));
    EXPECT_EQ(healthRequests(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Replies, ManagerUnusableStatus,
    ::testing::Values(UnusableStatus{0, ""}, UnusableStatus{500, R"({"state":"STARTING"})"},
                      UnusableStatus{204, ""}, UnusableStatus{201, R"({"state":"STARTING"})"},
                      UnusableStatus{200, "not json"}, UnusableStatus{200, ""},
                      UnusableStatus{200, R"({"localServer":{"port":"3001"}})"},
                      UnusableStatus{200, R"({"localServer":{"port":3001.5}})"},
                      UnusableStatus{200, R"({"cloudflared":{"running":1}})"},
                      UnusableStatus{200, "[]"}));

TEST_F(ManagerStatus, AnUnusableDocumentFromAnUnhealthyServerIsOffline) {
    world.http.respond = [](const FakeRequest& request) {
        return HttpReply{request.url.endsWith(QStringLiteral("health")) ? 204 : 500, {}};
    };
    startManager();
    EXPECT_EQ(manager->menuState(), ConnectorMenuState::offline);
}

TEST_F(ManagerStatus, AServerPortThatIsNotPositiveIsIgnored) {
    for (const char* port : {"0", "-1", "null"}) {
        manager->updateStatus(
            TrayConnectionStatus::decode(QByteArray("{\"localServer\":{\"port\":") + port + "}}"));
        EXPECT_EQ(manager->serverPort(), 3000);
    }
}

TEST_F(ManagerStatus, AWebAddressThatDoesNotParseIsIgnored) {
    const QUrl before = manager->webAppBaseURL();
    for (const char* document :
         {R"({"webAppUrl":""})", R"({"webAppUrl":"http://[broken"})", R"({"webAppUrl":null})"}) {
        manager->updateStatus(TrayConnectionStatus::decode(document));
        EXPECT_EQ(manager->webAppBaseURL(), before);
    }
}

TEST_F(ManagerStatus, AnEmptyWorkspaceStaysAnEmptyText) {
    manager->updateStatus(TrayConnectionStatus::decode(R"({"workspaceId":""})"));
    EXPECT_EQ(manager->workspaceId(), QString(QLatin1String("")));
    EXPECT_TRUE(manager->workspaceId().has_value());
}

TEST_F(ManagerStatus, ALoginThatIsNeededPublishesTheWorkspace) {
    manager->updateStatus(
        TrayConnectionStatus::decode(R"({"state":"NEEDS_LOGIN","workspaceId":"w1"})"));
    EXPECT_EQ(manager->menuState(), ConnectorMenuState::notPaired);
    EXPECT_EQ(manager->statusText(), QStringLiteral("Not Paired"));
    EXPECT_EQ(manager->workspaceId(), QStringLiteral("w1"));
}

TEST_F(ManagerStatus, PollingNeverTouchesTheError) {
    begin(manager->startPairing());
    const QString before = error();
    answerStatusWith(kRunning);
    begin(manager->refreshStatus());
    EXPECT_EQ(error(), before);
    world.http.respond = fakes::FakeHttp::refuse;
    begin(manager->refreshStatus());
    EXPECT_EQ(error(), before);
}

TEST_F(ManagerStatus, TheUpdateCheckTimerTicksEverySixHours) {
    manager->startPolling();
    EXPECT_EQ(manager->runtimeUpdateStatusText(), QStringLiteral("Runtime: Checking..."));
    advance(21'599);
    EXPECT_EQ(manager->runtimeUpdateStatusText(), QStringLiteral("Runtime: Checking..."));
    advance(1);
    EXPECT_EQ(manager->runtimeUpdateStatusText(),
              QStringLiteral("Runtime: Runtime updater disabled in config.json."));
}

TEST_F(ManagerStatus, TimersDoNotKeepTheManagerAlive) {
    manager->startPolling();
    const std::weak_ptr<DesktopConnectorManager> weak = manager;
    manager.reset();
    EXPECT_TRUE(weak.expired());
    advance(30'000);
    EXPECT_EQ(statusRequests(), 0);
}

} // namespace orvanta
