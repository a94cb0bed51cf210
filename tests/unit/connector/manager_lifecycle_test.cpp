// SPDX-License-Identifier: MIT
#include "unit/connector/manager_fixture.h"

namespace orvanta {

using fakes::FakeRequest;

using ManagerLifecycle = ManagerTest;

TEST_F(ManagerLifecycle, ANewManagerHasItsInitialValuesAndTouchesNothing) {
    EXPECT_EQ(manager->menuState(), ConnectorMenuState::offline);
    EXPECT_EQ(manager->statusText(), QStringLiteral("Offline"));
    EXPECT_EQ(manager->workspaceId(), std::nullopt);
    EXPECT_EQ(manager->lastError(), std::nullopt);
    EXPECT_EQ(manager->webAppBaseURL(), QUrl(QStringLiteral("https://my.orvanta.example")));
    EXPECT_FALSE(manager->launchAtLoginEnabled());
    EXPECT_EQ(manager->runtimeUpdateStatusText(), QStringLiteral("Runtime: Checking..."));
    EXPECT_FALSE(manager->runtimeUpdateAvailable());
    EXPECT_FALSE(manager->runtimeCanRollback());
    EXPECT_FALSE(manager->runtimeUpdateInProgress());
    EXPECT_EQ(manager->serverPort(), 3000);
    EXPECT_EQ(manager->traySettings(), (MacTraySettings{5, 5, 8}));
    EXPECT_EQ(manager->activeRuntime(), std::nullopt);
    EXPECT_FALSE(manager->hasServerProcess());
    EXPECT_FALSE(manager->isShuttingDown());
    EXPECT_FALSE(manager->restartScheduled());
    EXPECT_FALSE(manager->startInProgress());
    EXPECT_TRUE(world.files.questions.empty());
    EXPECT_TRUE(world.processes.children.empty());
    EXPECT_TRUE(world.serialQueues.listeners.empty());
    EXPECT_EQ(world.application.accessoryCount, 0);
    EXPECT_EQ(world.http.sessions, (std::vector{HttpLimits{Seconds(5), Seconds(8)}}));
}

TEST_F(ManagerLifecycle, TheDefaultWebOriginHas26Characters) {
    EXPECT_EQ(manager->webAppBaseURL().toString().size(), 26);
}

TEST_F(ManagerLifecycle, AnEnabledLoginItemIsSeenAtConstruction) {
    world.loginItem.enabled = true;
    EXPECT_TRUE(std::make_shared<DesktopConnectorManager>(world.platform)->launchAtLoginEnabled());
}

TEST_F(ManagerLifecycle, TheFirstRunCreatesTheStateRootAndCopiesTheTemplate) {
    const QByteArray bytes("{\"tray\":{\"statusPollIntervalSeconds\":7}}\r\n\0x", 44);
    world.files.addFile(QStringLiteral("/app/resources/local-server/config.installer.json"), bytes);
    startManager();
    EXPECT_TRUE(world.files.items.at(world.stateRoot()).isDirectory);
    EXPECT_EQ(world.files.items.at(world.configPath()).bytes, bytes);
}

TEST_F(ManagerLifecycle, AnExistingConfigurationIsNeverOverwritten) {
    for (const QByteArray& existing : {QByteArray(), QByteArray("not json")}) {
        world.files.addFile(world.configPath(), existing);
        startManager();
        EXPECT_EQ(world.files.items.at(world.configPath()).bytes, existing);
        EXPECT_EQ(manager->traySettings(), (MacTraySettings{5, 5, 8}));
        EXPECT_EQ(manager->lastError(), std::nullopt);
    }
}

TEST_F(ManagerLifecycle, TheResourceLimitIsNeverShorterThanTheRequestLimit) {
    world.files.addFile(world.configPath(),
                        R"({"tray":{"httpTimeoutSeconds":12,"httpResourceTimeoutSeconds":3}})");
    startManager();
    EXPECT_EQ(world.http.sessions.back(), (HttpLimits{Seconds(12), Seconds(12)}));
    EXPECT_EQ(world.http.requests.front().limits, (HttpLimits{Seconds(12), Seconds(12)}));
}

TEST_F(ManagerLifecycle, SettingsThatAreNotPositiveGetTheirDefaults) {
    world.files.addFile(world.configPath(),
                        R"({"tray":{"statusPollIntervalSeconds":0,"httpTimeoutSeconds":-1}})");
    startManager();
    EXPECT_EQ(manager->traySettings(), (MacTraySettings{5, 5, 8}));
    EXPECT_EQ(world.queue.repeatingIntervals().front(), Seconds(5));
}

TEST_F(ManagerLifecycle, StartBecomesAnAccessoryAndRunsOnePollAndOneUpdateTimer) {
    startManager();
    EXPECT_EQ(world.application.accessoryCount, 1);
    EXPECT_EQ(world.application.observers.size(), 1U);
    EXPECT_EQ(world.queue.repeatingIntervals(), (std::vector{Seconds(5), Seconds(21'600)}));
    EXPECT_EQ(world.serialQueues.listeners.size(), 1U);
    EXPECT_EQ(world.serialQueues.labels,
              QStringList{QStringLiteral("com.orvanta.macos.host-control")});
}

TEST_F(ManagerLifecycle, StartReturnsBeforeItsTaskRuns) {
    manager->start();
    EXPECT_TRUE(world.http.requests.empty());
    EXPECT_TRUE(world.processes.children.empty());
}

TEST_F(ManagerLifecycle, AConnectorThatAnswersAlreadyIsAdopted) {
    answerStatusWith(kRunning);
    startManager();
    EXPECT_TRUE(world.processes.children.empty());
    EXPECT_EQ(world.http.urls(),
              std::vector{QStringLiteral("http://127.0.0.1:3000/api/ov/status")});
    EXPECT_EQ(manager->menuState(), ConnectorMenuState::online);
    // The update check has run all the same.
    EXPECT_EQ(manager->runtimeUpdateStatusText(),
              QStringLiteral("Runtime: Runtime updater disabled in config.json."));
}

TEST_F(ManagerLifecycle, AConnectorThatIsHealthyButHasNoStatusIsNotAdopted) {
    world.http.respond = [](const FakeRequest& request) {
        return HttpReply{request.url.endsWith(QStringLiteral("health")) ? 200 : 500, {}};
    };
    startManager();
    EXPECT_EQ(world.processes.children.size(), 1U);
}

TEST_F(ManagerLifecycle, TheConnectorIsLaunchedOnlyAfterTheFirstStatusRequestHasFailed) {
    world.http.respond = [](const FakeRequest&) { return std::nullopt; };
    startManager();
    EXPECT_TRUE(world.processes.children.empty());
    world.http.fail(0);
    world.queue.runUntilIdle();
    EXPECT_TRUE(world.processes.children.empty());
    world.http.fail(1);
    world.queue.runUntilIdle();
    EXPECT_EQ(world.processes.children.size(), 1U);
}

class FailedStart : public ManagerTest {
protected:
    void expectNothingRuns() {
        startManager();
        advance(100'000);
        EXPECT_EQ(world.queue.repeatingTimerCount(), 0U);
        EXPECT_TRUE(world.serialQueues.listeners.empty());
        EXPECT_TRUE(world.processes.children.empty());
        EXPECT_TRUE(world.http.requests.empty());
        EXPECT_EQ(manager->runtimeUpdateStatusText(), QStringLiteral("Runtime: Checking..."));
    }
};

TEST_F(FailedStart, AStateRootThatCannotBeCreatedStopsTheStartUp) {
    world.files.failures["createDirectory"] = QStringLiteral("No folder for you.");
    expectNothingRuns();
    EXPECT_EQ(error(), QStringLiteral("No folder for you."));
}

TEST_F(FailedStart, AMissingTemplateStopsTheStartUp) {
    world.files.remove(QStringLiteral("/app/resources/local-server/config.installer.json"));
    expectNothingRuns();
    EXPECT_EQ(error(),
              QStringLiteral("Bundled config.installer.json is missing from the app resources."));
}

TEST_F(FailedStart, ATemplateThatCannotBeCopiedStopsTheStartUp) {
    world.files.failures["copyItem"] = QStringLiteral("Disk full.");
    expectNothingRuns();
    EXPECT_EQ(error(), QStringLiteral("Disk full."));
}

TEST_F(FailedStart, AListenerThatCannotBeMadeStopsTheStartUp) {
    world.serialQueues.refusal = QStringLiteral("No port is free.");
    expectNothingRuns();
    EXPECT_EQ(error(), QStringLiteral("No port is free."));
}

TEST_F(ManagerLifecycle, AnUnreadableConfigurationYieldsTheDefaultsSilently) {
    world.files.addDirectory(world.configPath());
    startManager();
    EXPECT_EQ(manager->traySettings(), (MacTraySettings{5, 5, 8}));
    EXPECT_EQ(manager->lastError(), std::nullopt);
    EXPECT_EQ(world.processes.children.size(), 1U);
}

TEST_F(ManagerLifecycle, TerminationStopsEverythingAndSendsOneSignal) {
    startManager();
    manager->handleApplicationTermination();
    EXPECT_TRUE(manager->isShuttingDown());
    EXPECT_EQ(world.queue.repeatingTimerCount(), 0U);
    EXPECT_TRUE(world.application.observers.empty());
    EXPECT_EQ(world.serialQueues.listeners.front()->cancelCount, 1);
    EXPECT_EQ(world.processes.last().terminateCount, 1);
    EXPECT_FALSE(manager->hasServerProcess());
    EXPECT_TRUE(world.processes.last().isRunning());
}

TEST_F(ManagerLifecycle, TheTerminationNotificationShutsDown) {
    startManager();
    world.application.terminate();
    EXPECT_TRUE(manager->isShuttingDown());
    EXPECT_EQ(world.processes.last().terminateCount, 1);
}

TEST_F(ManagerLifecycle, QuitThenTheNotificationShutsDownOnce) {
    startManager();
    manager->handleApplicationTermination();
    world.application.terminate();
    EXPECT_EQ(world.processes.last().terminateCount, 1);
    EXPECT_EQ(world.serialQueues.listeners.front()->cancelCount, 1);
}

TEST_F(ManagerLifecycle, NothingIsStartedAfterTermination) {
    startManager();
    manager->handleApplicationTermination();
    world.processes.last().exit(0);
    advance(100'000);
    EXPECT_EQ(world.processes.children.size(), 1U);
    EXPECT_EQ(world.output.lines,
              QStringList{QStringLiteral("Orvanta server exited with status 0")});
}

TEST_F(ManagerLifecycle, AQuitDuringTheFirstStatusRequestLaunchesNothing) {
    world.http.respond = [](const FakeRequest&) { return std::nullopt; };
    startManager();
    manager->handleApplicationTermination();
    world.http.fail(0);
    world.queue.runUntilIdle();
    world.http.fail(1);
    advance(100);
    EXPECT_TRUE(world.processes.children.empty());
}

TEST_F(ManagerLifecycle, TheObserverDoesNotKeepTheManagerAlive) {
    manager->start();
    const std::weak_ptr<DesktopConnectorManager> weak = manager;
    manager.reset();
    EXPECT_TRUE(weak.expired());
    world.application.terminate();
    world.queue.runUntilIdle();
    EXPECT_TRUE(world.processes.children.empty());
}

TEST_F(ManagerLifecycle, TheUpdaterIsMadeOnceWithBothRoots) {
    MacRuntimeUpdater& updater = manager->runtimeUpdater();
    EXPECT_EQ(&updater, &manager->runtimeUpdater());
    EXPECT_EQ(updater.resourceRoot(), QStringLiteral("/app/resources"));
    EXPECT_EQ(updater.stateRoot(), QStringLiteral("/home/user/share/Orvanta"));
}

TEST_F(ManagerLifecycle, PropertiesAnnounceAChangeBeforeItHappens) {
    QStringList seen;
    manager->willChange().observe([&] { seen.append(manager->statusText()); });
    answerStatusWith(kRunning);
    startManager();
    ASSERT_FALSE(seen.isEmpty());
    EXPECT_EQ(seen.first(), QStringLiteral("Offline"));
    EXPECT_EQ(manager->statusText(), QStringLiteral("Online"));
}

} // namespace orvanta
