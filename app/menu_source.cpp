// SPDX-License-Identifier: MIT
#include "app/menu_source.h"

#include "connector/desktop_connector_manager.h"

namespace orvanta {
namespace {

MenuSnapshot snapshotOf(const DesktopConnectorManager& manager) {
    return {
        .menuState = manager.menuState(),
        .statusText = manager.statusText(),
        .workspaceId = manager.workspaceId(),
        .lastError = manager.lastError(),
        .webAppBaseURL = manager.webAppBaseURL(),
        .launchAtLoginEnabled = manager.launchAtLoginEnabled(),
        .runtimeUpdateStatusText = manager.runtimeUpdateStatusText(),
        .runtimeUpdateAvailable = manager.runtimeUpdateAvailable(),
        .runtimeCanRollback = manager.runtimeCanRollback(),
        .runtimeUpdateInProgress = manager.runtimeUpdateInProgress(),
    };
}

} // namespace

MenuSource menuSource(const std::shared_ptr<DesktopConnectorManager>& manager) {
    return {
        .snapshot = [manager] { return snapshotOf(*manager); },
        .observeChanges =
            [manager](std::function<void()> willChange, std::function<void()> settled) {
                manager->willChange().observe(std::move(willChange), std::move(settled));
            },
        .openDashboard = [manager] { manager->openDashboard(); },
        .startPairing = [manager] { return manager->startPairing(); },
        .signOut = [manager] { return manager->signOut(); },
        .restartServer = [manager] { return manager->restartServer(); },
        .checkRuntimeUpdates = [manager] { return manager->checkRuntimeUpdates(true); },
        .applyRuntimeUpdate = [manager] { return manager->applyRuntimeUpdate(); },
        .rollbackRuntime = [manager] { return manager->rollbackRuntime(); },
        .setLaunchAtLogin = [manager](bool enabled) { manager->setLaunchAtLogin(enabled); },
        .handleApplicationTermination = [manager] { manager->handleApplicationTermination(); },
    };
}

} // namespace orvanta
