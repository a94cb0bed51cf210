// SPDX-License-Identifier: MIT
#include "app/menu_entries.h"

#include "unit/app/print_text.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

using Id = MenuEntryId;
using Kind = MenuEntryKind;

MenuSnapshot freshSnapshot() {
    return {.statusText = QStringLiteral("Offline"),
            .runtimeUpdateStatusText = QStringLiteral("Runtime: Checking...")};
}

MenuEntry entryOf(const MenuSnapshot& snapshot, Id id) {
    return menuEntries(snapshot).at(static_cast<std::size_t>(id) - 1);
}

bool isEnabled(const MenuSnapshot& snapshot, Id id) {
    return entryOf(snapshot, id).isEnabled;
}

TEST(MenuEntries, TheFreshMenuIsThisTable) {
    const auto footnote = [](Id id, const char* text, int lines, bool isVisible) {
        return MenuEntry{
            id,    Kind::text, QString::fromUtf8(text), MenuFont::footnote, true, lines, isVisible,
            false, false};
    };
    const auto rule = [](Id id) { return MenuEntry{.id = id, .kind = Kind::separator}; };
    const auto choice = [](Id id, Kind kind, const char* text, bool enabled) {
        return MenuEntry{id,      kind, QString::fromUtf8(text), MenuFont::body, false, 1, true,
                         enabled, false};
    };
    const std::vector<MenuEntry> expected = {
        {Id::status, Kind::text, QStringLiteral("Status: Offline"), MenuFont::headline, false, 1,
         true, false, false},
        footnote(Id::workspace, "", 1, false),
        footnote(Id::lastError, "", MenuEntry::kUnlimitedLines, false),
        rule(Id::statusSeparator),
        choice(Id::openDashboard, Kind::button, "Open Dashboard", true),
        choice(Id::signIn, Kind::button, "Sign In / Pair", true),
        choice(Id::signOut, Kind::button, "Sign Out", false),
        choice(Id::restart, Kind::button, "Restart", true),
        rule(Id::commandSeparator),
        footnote(Id::runtimeStatus, "Runtime: Checking...", 2, true),
        choice(Id::checkForUpdates, Kind::button, "Check for Runtime Updates", true),
        choice(Id::applyUpdate, Kind::button, "Update Desktop Connector", false),
        choice(Id::rollback, Kind::button, "Rollback Runtime", false),
        choice(Id::launchAtLogin, Kind::toggle, "Launch at Login", true),
        rule(Id::runtimeSeparator),
        choice(Id::quit, Kind::button, "Quit", true),
    };
    EXPECT_EQ(menuEntries(freshSnapshot()), expected);
}

TEST(MenuEntries, PositionsAreTheIds) {
    const std::vector<MenuEntry> entries = menuEntries(freshSnapshot());
    ASSERT_EQ(entries.size(), 16u);
    for (std::size_t index = 0; index < entries.size(); ++index) {
        EXPECT_EQ(static_cast<std::size_t>(entries[index].id), index + 1);
    }
}

struct PairingCase {
    ConnectorMenuState state;
    bool canSignIn;
    bool canSignOut;
};

class Pairing : public testing::TestWithParam<PairingCase> {};

TEST_P(Pairing, DependsOnTheState) {
    MenuSnapshot snapshot = freshSnapshot();
    snapshot.menuState = GetParam().state;
    EXPECT_EQ(isEnabled(snapshot, Id::signIn), GetParam().canSignIn);
    EXPECT_EQ(isEnabled(snapshot, Id::signOut), GetParam().canSignOut);
}

INSTANTIATE_TEST_SUITE_P(States, Pairing,
                         testing::Values(PairingCase{ConnectorMenuState::offline, true, false},
                                         PairingCase{ConnectorMenuState::notPaired, true, false},
                                         PairingCase{ConnectorMenuState::online, false, true}));

struct UpdateCase {
    bool isAvailable;
    bool canRollBack;
    bool isInProgress;
};

class RuntimeButtons : public testing::TestWithParam<UpdateCase> {};

TEST_P(RuntimeButtons, DependOnTheThreeFlags) {
    MenuSnapshot snapshot = freshSnapshot();
    const auto [isAvailable, canRollBack, isInProgress] = GetParam();
    snapshot.runtimeUpdateAvailable = isAvailable;
    snapshot.runtimeCanRollback = canRollBack;
    snapshot.runtimeUpdateInProgress = isInProgress;
    EXPECT_EQ(isEnabled(snapshot, Id::checkForUpdates), !isInProgress);
    EXPECT_EQ(isEnabled(snapshot, Id::applyUpdate), !isInProgress && isAvailable);
    EXPECT_EQ(isEnabled(snapshot, Id::rollback), !isInProgress && canRollBack);
}

INSTANTIATE_TEST_SUITE_P(
    AllFlags, RuntimeButtons,
    testing::Values(UpdateCase{false, false, false}, UpdateCase{true, false, false},
                    UpdateCase{false, true, false}, UpdateCase{true, true, false},
                    UpdateCase{false, false, true}, UpdateCase{true, false, true},
                    UpdateCase{false, true, true}, UpdateCase{true, true, true}));

TEST(MenuEntries, SomeCanAlwaysBeChosen) {
    for (const auto state :
         {ConnectorMenuState::offline, ConnectorMenuState::notPaired, ConnectorMenuState::online}) {
        for (const bool isBusy : {false, true}) {
            MenuSnapshot snapshot = freshSnapshot();
            snapshot.menuState = state;
            snapshot.runtimeUpdateInProgress = isBusy;
            for (const Id id : {Id::openDashboard, Id::restart, Id::launchAtLogin, Id::quit}) {
                EXPECT_TRUE(isEnabled(snapshot, id)) << static_cast<int>(id) << ' ' << isBusy;
            }
        }
    }
}

TEST(MenuEntries, WorkspaceAndErrorShowVerbatimWhenThereIsSomething) {
    MenuSnapshot snapshot = freshSnapshot();
    snapshot.workspaceId = QStringLiteral("w42");
    snapshot.lastError = QStringLiteral("It broke.\nBadly.");
    EXPECT_TRUE(entryOf(snapshot, Id::workspace).isVisible);
    EXPECT_EQ(entryOf(snapshot, Id::workspace).text, QStringLiteral("w42"));
    EXPECT_TRUE(entryOf(snapshot, Id::lastError).isVisible);
    EXPECT_EQ(entryOf(snapshot, Id::lastError).text, QStringLiteral("It broke.\nBadly."));
}

TEST(MenuEntries, EmptyWorkspaceAndErrorHideLikeAbsentOnes) {
    MenuSnapshot snapshot = freshSnapshot();
    snapshot.workspaceId = QString();
    snapshot.lastError = QStringLiteral("");
    EXPECT_FALSE(entryOf(snapshot, Id::workspace).isVisible);
    EXPECT_FALSE(entryOf(snapshot, Id::lastError).isVisible);
    EXPECT_TRUE(entryOf(snapshot, Id::statusSeparator).isVisible);
}

TEST(MenuEntries, StatusRuntimeLineAndTickFollowTheirProperties) {
    MenuSnapshot snapshot = freshSnapshot();
    snapshot.statusText = QStringLiteral("Restarting...");
    snapshot.runtimeUpdateStatusText = QStringLiteral("Runtime: 1.2.3");
    snapshot.launchAtLoginEnabled = true;
    EXPECT_EQ(entryOf(snapshot, Id::status).text, QStringLiteral("Status: Restarting..."));
    EXPECT_EQ(entryOf(snapshot, Id::runtimeStatus).text, QStringLiteral("Runtime: 1.2.3"));
    EXPECT_TRUE(entryOf(snapshot, Id::launchAtLogin).isChecked);
}

} // namespace
} // namespace orvanta
