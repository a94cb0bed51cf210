// SPDX-License-Identifier: MIT
#pragma once

#include "app/menu_source.h"
#include "base/published.h"

#include <string>
#include <vector>

namespace orvanta {

/// A manager that only notes what it is asked to do.
struct RecordingMenuSource {
    MenuSnapshot snapshot;
    WillChange willChange;
    std::vector<std::string> calls;

    MenuSource source() {
        return {
            .snapshot = [this] { return snapshot; },
            .observeChanges =
                [this](std::function<void()> beforeChange, std::function<void()> settled) {
                    willChange.observe(std::move(beforeChange), std::move(settled));
                },
            .openDashboard = [this] { calls.emplace_back("openDashboard"); },
            .startPairing = task("startPairing"),
            .signOut = task("signOut"),
            .restartServer = task("restartServer"),
            .checkRuntimeUpdates = task("checkRuntimeUpdates"),
            .applyRuntimeUpdate = task("applyRuntimeUpdate"),
            .rollbackRuntime = task("rollbackRuntime"),
            .setLaunchAtLogin =
                [this](bool enabled) {
                    calls.emplace_back(enabled ? "setLaunchAtLogin(true)"
                                               : "setLaunchAtLogin(false)");
                },
            .handleApplicationTermination =
                [this] { calls.emplace_back("handleApplicationTermination"); },
        };
    }

    /// As the manager does it: announced first, changed afterwards.
    void setStatusText(const QString& text) {
        willChange.announce();
        snapshot.statusText = text;
    }

private:
    std::function<Task<>()> task(std::string name) {
        return [this, name = std::move(name)] { return record(name); };
    }

    Task<> record(std::string name) {
        calls.push_back(std::move(name));
        co_return;
    }
};

} // namespace orvanta
