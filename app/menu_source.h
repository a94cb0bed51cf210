// SPDX-License-Identifier: MIT
#pragma once

#include "app/menu_entries.h"
#include "base/task.h"

#include <functional>
#include <memory>

namespace orvanta {

class DesktopConnectorManager;

/// What the menu needs of the manager: its properties and its operations. Every function is set.
/// Copies keep the manager alive.
struct MenuSource {
    std::function<MenuSnapshot()> snapshot;
    /// As `WillChange::observe`, as long as the manager lives.
    std::function<void(std::function<void()> willChange, std::function<void()> settled)>
        observeChanges;

    std::function<void()> openDashboard;
    std::function<Task<>()> startPairing;
    std::function<Task<>()> signOut;
    std::function<Task<>()> restartServer;
    std::function<Task<>()> checkRuntimeUpdates; ///< with failures shown
    std::function<Task<>()> applyRuntimeUpdate;
    std::function<Task<>()> rollbackRuntime;
    std::function<void(bool enabled)> setLaunchAtLogin;
    std::function<void()> handleApplicationTermination;
};

MenuSource menuSource(const std::shared_ptr<DesktopConnectorManager>& manager);

} // namespace orvanta
