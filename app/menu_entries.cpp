// SPDX-License-Identifier: MIT
#include "app/menu_entries.h"

namespace orvanta {
namespace {

MenuEntry separator(MenuEntryId id) {
    return {.id = id, .kind = MenuEntryKind::separator};
}

MenuEntry button(MenuEntryId id, const QString& text, bool isEnabled) {
    return {.id = id, .kind = MenuEntryKind::button, .text = text, .isEnabled = isEnabled};
}

MenuEntry footnote(MenuEntryId id, const QString& text, int maximumLines) {
    return {.id = id,
            .text = text,
            .font = MenuFont::footnote,
            .isSecondary = true,
            .maximumLines = maximumLines};
}

/// A line that is there only when it has something to say.
MenuEntry optionalFootnote(MenuEntryId id, const std::optional<QString>& text, int maximumLines) {
    MenuEntry entry = footnote(id, text.value_or(QString()), maximumLines);
    entry.isVisible = !entry.text.isEmpty();
    return entry;
}

MenuEntry statusLine(const MenuSnapshot& snapshot) {
    return {.id = MenuEntryId::status,
            .text = QStringLiteral("Status: ") + snapshot.statusText,
            .font = MenuFont::headline};
}

MenuEntry launchAtLogin(const MenuSnapshot& snapshot) {
    return {.id = MenuEntryId::launchAtLogin,
            .kind = MenuEntryKind::toggle,
            .text = QStringLiteral("Launch at Login"),
            .isEnabled = true,
            .isChecked = snapshot.launchAtLoginEnabled};
}

} // namespace

std::vector<MenuEntry> menuEntries(const MenuSnapshot& snapshot) {
    using Id = MenuEntryId;
    const bool isOnline = snapshot.menuState == ConnectorMenuState::online;
    const bool isIdle = !snapshot.runtimeUpdateInProgress;
    return {
        statusLine(snapshot),
        optionalFootnote(Id::workspace, snapshot.workspaceId, 1),
        optionalFootnote(Id::lastError, snapshot.lastError, MenuEntry::kUnlimitedLines),
        separator(Id::statusSeparator),
        button(Id::openDashboard, QStringLiteral("Open Dashboard"), true),
        button(Id::signIn, QStringLiteral("Sign In / Pair"), !isOnline),
        button(Id::signOut, QStringLiteral("Sign Out"), isOnline),
        button(Id::restart, QStringLiteral("Restart"), true),
        separator(Id::commandSeparator),
        footnote(Id::runtimeStatus, snapshot.runtimeUpdateStatusText, 2),
        button(Id::checkForUpdates, QStringLiteral("Check for Runtime Updates"), isIdle),
        button(Id::applyUpdate, QStringLiteral("Update Desktop Connector"),
               isIdle && snapshot.runtimeUpdateAvailable),
        button(Id::rollback, QStringLiteral("Rollback Runtime"),
               isIdle && snapshot.runtimeCanRollback),
        launchAtLogin(snapshot),
        separator(Id::runtimeSeparator),
        button(Id::quit, QStringLiteral("Quit"), true),
    };
}

} // namespace orvanta
