// SPDX-License-Identifier: MIT
#pragma once

#include "app/menu_entries.h"

#include <vector>

namespace orvanta {

/// An icon with its menu on one desktop connection; it vanishes with the object.
class TrayIcon {
public:
    virtual ~TrayIcon() = default;

    // Both show what differs from what is shown already; nothing reaches the desktop when nothing
    // does.

    /// The icon alone. Called before the menu is brought up to date.
    virtual void showState(ConnectorMenuState state) = 0;

    /// Icon and menu. A menu that is open stays open.
    virtual void show(ConnectorMenuState state, const std::vector<MenuEntry>& entries) = 0;
};

} // namespace orvanta
