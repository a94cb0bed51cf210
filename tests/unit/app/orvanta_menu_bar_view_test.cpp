// SPDX-License-Identifier: MIT
#include "app/orvanta_menu_bar_view.h"

#include "fakes/fake_desktop.h"
#include "fakes/fake_main_queue.h"
#include "unit/app/print_text.h"
#include "unit/app/recording_menu_source.h"

#include <gmock/gmock.h>

namespace orvanta {
namespace {

using Id = MenuEntryId;
using testing::ElementsAre;
using testing::IsEmpty;

struct MenuBarView : testing::Test {
    RecordingMenuSource manager;
    fakes::FakeMainQueue queue;
    fakes::FakeApplicationHost application;
    OrvantaMenuBarView view{manager.source(), queue, application};

    /// Everything that can be enabled at once, but Sign Out.
    void enableAll() {
        manager.snapshot.runtimeUpdateAvailable = true;
        manager.snapshot.runtimeCanRollback = true;
    }
};

TEST_F(MenuBarView, EntriesAreThoseOfTheSnapshotNow) {
    manager.snapshot.statusText = QStringLiteral("Online");
    EXPECT_EQ(view.entries(), menuEntries(manager.snapshot));
    manager.snapshot.lastError = QStringLiteral("Oh.");
    EXPECT_EQ(view.entries(), menuEntries(manager.snapshot));
}

TEST_F(MenuBarView, OpenDashboardIsCalledDirectly) {
    view.activate(Id::openDashboard);
    EXPECT_THAT(manager.calls, ElementsAre("openDashboard"));
}

struct TaskCase {
    Id id;
    const char* call;
};

class MenuBarViewTasks : public MenuBarView, public testing::WithParamInterface<TaskCase> {};

TEST_P(MenuBarViewTasks, StartOnALaterTurnOncePerPress) {
    enableAll();
    if (GetParam().id == Id::signOut) {
        manager.snapshot.menuState = ConnectorMenuState::online;
    }
    view.activate(GetParam().id);
    view.activate(GetParam().id);
    EXPECT_THAT(manager.calls, IsEmpty());
    queue.runUntilIdle();
    EXPECT_THAT(manager.calls, ElementsAre(GetParam().call, GetParam().call));
}

INSTANTIATE_TEST_SUITE_P(Commands, MenuBarViewTasks,
                         testing::Values(TaskCase{Id::signIn, "startPairing"},
                                         TaskCase{Id::signOut, "signOut"},
                                         TaskCase{Id::restart, "restartServer"},
                                         TaskCase{Id::checkForUpdates, "checkRuntimeUpdates"},
                                         TaskCase{Id::applyUpdate, "applyRuntimeUpdate"},
                                         TaskCase{Id::rollback, "rollbackRuntime"}));

TEST_F(MenuBarView, LaunchAtLoginIsToggledButNotSetHere) {
    view.activate(Id::launchAtLogin);
    view.activate(Id::launchAtLogin);
    manager.snapshot.launchAtLoginEnabled = true;
    view.activate(Id::launchAtLogin);
    EXPECT_THAT(manager.calls, ElementsAre("setLaunchAtLogin(true)", "setLaunchAtLogin(true)",
                                           "setLaunchAtLogin(false)"));
}

TEST_F(MenuBarView, QuitShutsTheManagerDownBeforeTheApplicationEnds) {
    application.addWillTerminateObserver([this] { manager.calls.emplace_back("terminate"); });
    view.activate(Id::quit);
    EXPECT_THAT(manager.calls, ElementsAre("handleApplicationTermination", "terminate"));
    EXPECT_EQ(application.terminateCount, 1);
}

TEST_F(MenuBarView, DisabledEntriesDoNothing) {
    manager.snapshot.menuState = ConnectorMenuState::online;
    manager.snapshot.runtimeUpdateInProgress = true;
    enableAll();
    view.activate(Id::signIn);
    view.activate(Id::checkForUpdates);
    view.activate(Id::applyUpdate);
    view.activate(Id::rollback);
    manager.snapshot.menuState = ConnectorMenuState::notPaired;
    view.activate(Id::signOut);
    queue.runUntilIdle();
    EXPECT_THAT(manager.calls, IsEmpty());
}

TEST_F(MenuBarView, TextsAndSeparatorsDoNothing) {
    manager.snapshot.workspaceId = QStringLiteral("w42");
    manager.snapshot.lastError = QStringLiteral("Oh.");
    for (const Id id : {Id::status, Id::workspace, Id::lastError, Id::statusSeparator,
                        Id::commandSeparator, Id::runtimeStatus, Id::runtimeSeparator}) {
        view.activate(id);
    }
    queue.runUntilIdle();
    EXPECT_THAT(manager.calls, IsEmpty());
    EXPECT_EQ(application.terminateCount, 0);
}

TEST_F(MenuBarView, ABurstOfChangesIsOneRedrawWithTheLatestValues) {
    QStringList drawn;
    view.onChange([&] { drawn.append(view.entries().front().text); });
    manager.setStatusText(QStringLiteral("Starting..."));
    manager.setStatusText(QStringLiteral("Online"));
    EXPECT_TRUE(drawn.isEmpty());
    queue.runUntilIdle();
    EXPECT_EQ(drawn, QStringList{QStringLiteral("Status: Online")});

    manager.setStatusText(QStringLiteral("Offline"));
    queue.runUntilIdle();
    EXPECT_EQ(drawn.size(), 2);
}

TEST_F(MenuBarView, WhatHasSettledIsDrawnAtOnceAndNotAgain) {
    QStringList drawn;
    view.onChange([&] { drawn.append(view.entries().front().text); });
    manager.setStatusText(QStringLiteral("Online"));
    manager.willChange.settle();
    EXPECT_EQ(drawn, QStringList{QStringLiteral("Status: Online")});
    manager.willChange.settle();
    queue.runUntilIdle();
    EXPECT_EQ(drawn.size(), 1);
}

TEST_F(MenuBarView, OfWhatHasSettledAnIconIsDrawnAtOnceAndTheRestOnALaterTurn) {
    QStringList drawn;
    view.onChange([&] { drawn.append(view.entries().front().text); },
                  [&] { drawn.append(QStringLiteral("icon")); });
    manager.willChange.settle();
    EXPECT_TRUE(drawn.isEmpty());
    manager.setStatusText(QStringLiteral("Online"));
    manager.willChange.settle();
    EXPECT_EQ(drawn, QStringList{QStringLiteral("icon")});
    queue.runUntilIdle();
    EXPECT_EQ(drawn, (QStringList{QStringLiteral("icon"), QStringLiteral("Status: Online")}));
}

TEST_F(MenuBarView, AChangeAfterADrawingIsDrawnOnALaterTurn) {
    QStringList drawn;
    view.onChange([&] { drawn.append(view.entries().front().text); });
    manager.setStatusText(QStringLiteral("Online"));
    manager.willChange.settle();
    manager.setStatusText(QStringLiteral("Offline"));
    EXPECT_EQ(drawn.size(), 1);
    queue.runUntilIdle();
    EXPECT_EQ(drawn,
              (QStringList{QStringLiteral("Status: Online"), QStringLiteral("Status: Offline")}));
}

TEST(MenuBarViewLife, NoRedrawAfterItsEnd) {
    RecordingMenuSource manager;
    fakes::FakeMainQueue queue;
    fakes::FakeApplicationHost application;
    int redraws = 0;
    {
        OrvantaMenuBarView view(manager.source(), queue, application);
        view.onChange([&] { ++redraws; });
        manager.setStatusText(QStringLiteral("Starting..."));
    }
    manager.setStatusText(QStringLiteral("Online"));
    manager.willChange.settle();
    queue.runUntilIdle();
    EXPECT_EQ(redraws, 0);
}

} // namespace
} // namespace orvanta
