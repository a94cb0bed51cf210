// SPDX-License-Identifier: MIT
#pragma once

#include "connector/connection_status.h"

#include <QString>
#include <QUrl>

#include <optional>
#include <vector>

namespace orvanta {

/// The manager's published properties at one moment: all that the menu is computed from.
struct MenuSnapshot {
    ConnectorMenuState menuState = ConnectorMenuState::offline;
    QString statusText = {};
    std::optional<QString> workspaceId = {};
    std::optional<QString> lastError = {};
    QUrl webAppBaseURL = {};
    bool launchAtLoginEnabled = false;
    QString runtimeUpdateStatusText = {};
    bool runtimeUpdateAvailable = false;
    bool runtimeCanRollback = false;
    bool runtimeUpdateInProgress = false;

    bool operator==(const MenuSnapshot&) const = default;
};

/// The entries from top to bottom. The values are positions that people may type: they count from
/// 1 and never change, whatever is hidden.
enum class MenuEntryId {
    status = 1,
    workspace,
    lastError,
    statusSeparator,
    openDashboard,
    signIn,
    signOut,
    restart,
    commandSeparator,
    runtimeStatus,
    checkForUpdates,
    applyUpdate,
    rollback,
    launchAtLogin,
    runtimeSeparator,
    quit,
};

enum class MenuEntryKind { text, separator, button, toggle };
enum class MenuFont { body, headline, footnote };

/// One entry as a front end draws it.
struct MenuEntry {
    static constexpr int kUnlimitedLines = 0;

    MenuEntryId id = MenuEntryId::status;
    MenuEntryKind kind = MenuEntryKind::text;
    QString text = {}; ///< as it came from the connector: may hold anything
    MenuFont font = MenuFont::body;
    bool isSecondary = false; ///< drawn in the secondary colour
    int maximumLines = 1;     ///< what does not fit is cut; `kUnlimitedLines` wraps without end
    bool isVisible = true;
    bool isEnabled = false; ///< can be chosen now; never true for texts and separators
    bool isChecked = false; ///< only toggles

    bool operator==(const MenuEntry&) const = default;
};

/// All sixteen entries in their order, hidden ones included, so that front ends can keep what they
/// built for each.
std::vector<MenuEntry> menuEntries(const MenuSnapshot& snapshot);

} // namespace orvanta
