// SPDX-License-Identifier: MIT
#include "unit/connector/manager_fixture.h"

namespace orvanta {

using fakes::FakeRequest;

class ManagerCommands : public ManagerTest {
protected:
    void answerEverythingWith(int status) {
        world.http.respond = [status](const FakeRequest&) { return HttpReply{status, "{}"}; };
    }
    int posts(const char* path) const {
        return world.http.count("POST", QString::fromLatin1(path));
    }
};

struct Dashboard {
    const char* document;
    const char* opened;
};

class ManagerDashboard : public ManagerTest, public ::testing::WithParamInterface<Dashboard> {};

TEST_P(ManagerDashboard, TheWorkspaceIsAppendedWhenThereIsOne) {
    manager->updateStatus(TrayConnectionStatus::decode(GetParam().document));
    manager->openDashboard();
    ASSERT_EQ(world.browser.opened.size(), 1);
    EXPECT_EQ(world.browser.opened.front().toEncoded(), QByteArray(GetParam().opened));
    EXPECT_EQ(manager->lastError(), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    Workspaces, ManagerDashboard,
    ::testing::Values(
        Dashboard{"{}", "https://my.orvanta.example"},
        Dashboard{R"({"workspaceId":""})", "https://my.orvanta.example"},
        Dashboard{R"({"workspaceId":"w42"})", "https://my.orvanta.example/workspace/w42"},
        Dashboard{R"({"workspaceId":"a b"})", "https://my.orvanta.example/workspace/a%20b"}));

TEST_F(ManagerCommands, PairingPostsOnceAndClearsTheError) {
    begin(manager->startPairing());
    EXPECT_EQ(error(), QStringLiteral("Could not reach the Desktop Connector to start pairing."));
    answerEverythingWith(204);
    begin(manager->startPairing());
    EXPECT_EQ(manager->lastError(), std::nullopt);
    EXPECT_EQ(posts("/api/ov/pair/start"), 2);
    EXPECT_EQ(statusRequests(), 0);
}

TEST_F(ManagerCommands, PairingThatIsRefusedIsReported) {
    answerEverythingWith(409);
    begin(manager->startPairing());
    EXPECT_EQ(error(), QStringLiteral("Could not reach the Desktop Connector to start pairing."));
}

TEST_F(ManagerCommands, SigningOutRefreshesTheStatusBeforeItReturns) {
    world.http.respond = [](const FakeRequest& request) -> std::optional<HttpReply> {
        if (request.method == "POST") {
            return HttpReply{200, {}};
        }
        return std::nullopt;
    };
    const auto ended = begin(manager->signOut());
    EXPECT_EQ(posts("/api/ov/logout?unpair=1"), 1);
    ASSERT_EQ(statusRequests(), 1);
    EXPECT_FALSE(*ended);
    world.http.answer(1, {200, R"({"state":"NEEDS_PAIRING"})"});
    EXPECT_TRUE(*ended);
    EXPECT_EQ(manager->menuState(), ConnectorMenuState::notPaired);
    EXPECT_EQ(manager->lastError(), std::nullopt);
}

TEST_F(ManagerCommands, SigningOutThatFailsIsReportedWithoutARefresh) {
    begin(manager->signOut());
    EXPECT_EQ(error(), QStringLiteral("Could not reach the Desktop Connector to sign out."));
    EXPECT_EQ(statusRequests(), 0);
}

TEST_F(ManagerCommands, ARestartThatTheConnectorAcceptsIsLeftToIt) {
    startWithAnnouncedPort(8123);
    begin(manager->startPairing());
    answerEverythingWith(202);
    begin(manager->restartServer());
    EXPECT_EQ(posts("/api/server/restart"), 1);
    EXPECT_EQ(manager->statusText(), QStringLiteral("Restarting..."));
    EXPECT_EQ(manager->lastError(), std::nullopt);
    EXPECT_EQ(world.processes.last().terminateCount, 0);
}

TEST_F(ManagerCommands, ARestartThatReachesNobodyIsDoneHere) {
    startWithAnnouncedPort(8123);
    begin(manager->startPairing());
    const QString before = error();
    begin(manager->restartServer());
    EXPECT_EQ(manager->statusText(), QStringLiteral("Restarting..."));
    EXPECT_EQ(error(), before);
    EXPECT_EQ(world.processes.last().terminateCount, 1);
    world.processes.last().exit(0);
    advance(0.5);
    ASSERT_EQ(world.processes.children.size(), 2U);
    EXPECT_EQ(portOf(1), "8123");
}

TEST_F(ManagerCommands, AHostManagedRestartPausesHalfASecondAndKeepsThePort) {
    startWithAnnouncedPort(3000);
    begin(manager->performHostManagedRestart());
    EXPECT_TRUE(manager->restartScheduled());
    EXPECT_FALSE(manager->hasServerProcess());
    EXPECT_EQ(manager->statusText(), QStringLiteral("Restarting..."));
    advance(0.499);
    EXPECT_EQ(world.processes.children.size(), 1U);
    advance(0.001);
    ASSERT_EQ(world.processes.children.size(), 2U);
    EXPECT_FALSE(manager->restartScheduled());
    EXPECT_EQ(portOf(1), "3000");

    // Asked for with retry: its exit leads to an immediate start on any port.
    world.processes.last().exit(1);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.processes.children.size(), 3U);
}

TEST_F(ManagerCommands, AHostManagedRestartAtPortZeroAsksForAnyPortWithoutRetry) {
    startWithAnnouncedPort(0);
    begin(manager->performHostManagedRestart());
    advance(0.5);
    ASSERT_EQ(world.processes.children.size(), 2U);
    EXPECT_EQ(portOf(1), "0");
    world.processes.last().exit(1);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.processes.children.size(), 2U);
    EXPECT_TRUE(manager->restartScheduled());
}

TEST_F(ManagerCommands, TheExitDuringAHostManagedRestartSchedulesNothing) {
    startWithAnnouncedPort(8123);
    begin(manager->performHostManagedRestart());
    world.processes.last().exit(15);
    advance(30);
    EXPECT_EQ(world.processes.children.size(), 2U);
    EXPECT_EQ(world.output.lines,
              QStringList{QStringLiteral("Orvanta server exited with status 15")});
}

TEST_F(ManagerCommands, DuringTerminationAHostManagedRestartDoesNothing) {
    startManager();
    manager->handleApplicationTermination();
    const QString before = manager->statusText();
    begin(manager->performHostManagedRestart());
    advance(10);
    EXPECT_EQ(manager->statusText(), before);
    EXPECT_EQ(world.processes.children.size(), 1U);
    EXPECT_FALSE(manager->restartScheduled());
}

TEST_F(ManagerCommands, AQuitDuringTheRestartPauseStartsNothing) {
    startManager();
    begin(manager->performHostManagedRestart());
    manager->handleApplicationTermination();
    advance(10);
    EXPECT_EQ(world.processes.children.size(), 1U);
}

TEST_F(ManagerCommands, TwoRestartsAtOnceEndWithOneRunningChild) {
    startWithAnnouncedPort(8123);
    auto first = manager->performHostManagedRestart();
    auto second = manager->performHostManagedRestart();
    world.processes.last().exit(0);
    advance(5);
    EXPECT_EQ(world.processes.runningCount(), 1);
    EXPECT_EQ(world.processes.children.size(), 2U);
}

TEST_F(ManagerCommands, ThePollGoesOnDuringTheRestartPause) {
    world.files.addFile(world.configPath(), R"({"tray":{"statusPollIntervalSeconds":0.2}})");
    startWithAnnouncedPort(8123);
    begin(manager->performHostManagedRestart());
    advance(0.4);
    EXPECT_EQ(manager->statusText(), QStringLiteral("Offline"));
}

TEST_F(ManagerCommands, AnAcceptedHostControlRequestRestartsTheConnector) {
    startWithAnnouncedPort(8123);
    const auto connection = world.serialQueues.connect("POST /restart HTTP/1.1\r\n\r\n");
    EXPECT_THAT(connection->sent.toStdString(), ::testing::StartsWith("HTTP/1.1 202 Accepted\r\n"));
    EXPECT_EQ(world.processes.last().terminateCount, 0);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.processes.last().terminateCount, 1);
    advance(0.5);
    EXPECT_EQ(portOf(1), "8123");
}

TEST_F(ManagerCommands, ARejectedHostControlRequestChangesNothing) {
    startManager();
    world.serialQueues.connect("GET /restart HTTP/1.1\r\n\r\n");
    advance(2);
    EXPECT_EQ(world.processes.last().terminateCount, 0);
}

TEST_F(ManagerCommands, AHostControlRequestForAManagerThatIsGoneIsHarmless) {
    startManager();
    const auto onConnection = world.serialQueues.listeners.front()->onConnection;
    manager.reset();
    auto connection = std::make_shared<fakes::FakeConnection>("POST /restart HTTP/1.1\r\n\r\n");
    onConnection(connection);
    advance(2);
    EXPECT_EQ(world.processes.children.size(), 1U);
}

TEST_F(ManagerCommands, LaunchAtLoginIsRegisteredAndUnregistered) {
    manager->setLaunchAtLogin(true);
    EXPECT_TRUE(manager->launchAtLoginEnabled());
    manager->setLaunchAtLogin(false);
    EXPECT_FALSE(manager->launchAtLoginEnabled());
    EXPECT_EQ(world.loginItem.calls,
              (QStringList{QStringLiteral("register"), QStringLiteral("unregister")}));
}

TEST_F(ManagerCommands, LaunchAtLoginLeavesAnEarlierErrorAlone) {
    begin(manager->startPairing());
    const QString before = error();
    manager->setLaunchAtLogin(true);
    EXPECT_EQ(error(), before);
}

TEST_F(ManagerCommands, AFailedRegistrationIsOffAndReported) {
    world.loginItem.failure = QStringLiteral("The folder cannot be written.");
    manager->setLaunchAtLogin(true);
    EXPECT_FALSE(manager->launchAtLoginEnabled());
    EXPECT_EQ(error(), QStringLiteral("Launch at login failed: The folder cannot be written."));
}

TEST_F(ManagerCommands, AFailedRegistrationThatTookEffectAllTheSameIsOn) {
    world.loginItem.failure = QStringLiteral("No.");
    world.loginItem.enabled = true;
    manager->setLaunchAtLogin(true);
    EXPECT_TRUE(manager->launchAtLoginEnabled());
    EXPECT_EQ(error(), QStringLiteral("Launch at login failed: No."));
}

TEST_F(ManagerCommands, AFailedChangeShowsWhatTheLoginItemReallyIs) {
    world.loginItem.failure = QStringLiteral("No.");
    world.loginItem.enabled = true;
    manager->setLaunchAtLogin(false);
    EXPECT_TRUE(manager->launchAtLoginEnabled());
    EXPECT_EQ(error(), QStringLiteral("Launch at login failed: No."));
}

} // namespace orvanta
