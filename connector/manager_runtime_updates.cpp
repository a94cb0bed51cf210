// SPDX-License-Identifier: MIT
#include "connector/desktop_connector_manager.h"

namespace orvanta {

class DesktopConnectorManager::RuntimeCommand {
public:
    explicit RuntimeCommand(Published<bool>& inProgress) : m_inProgress(inProgress) {
        m_inProgress.set(true);
    }
    RuntimeCommand(const RuntimeCommand&) = delete;
    RuntimeCommand& operator=(const RuntimeCommand&) = delete;
    ~RuntimeCommand() { m_inProgress.set(false); }

private:
    Published<bool>& m_inProgress;
};

class DesktopConnectorManager::RuntimeWatch {
public:
    RuntimeWatch(std::set<QString>& watched, const QString& version)
        : m_watched(watched), m_version(version) {
        m_watched.insert(m_version);
    }
    RuntimeWatch(const RuntimeWatch&) = delete;
    RuntimeWatch& operator=(const RuntimeWatch&) = delete;
    ~RuntimeWatch() { m_watched.erase(m_version); }

private:
    std::set<QString>& m_watched;
    const QString m_version;
};

std::unique_ptr<DesktopConnectorManager::RuntimeCommand>
DesktopConnectorManager::beginRuntimeCommand(const QString& line) {
    if (*m_runtimeUpdateInProgress) {
        return nullptr;
    }
    auto command = std::make_unique<RuntimeCommand>(m_runtimeUpdateInProgress);
    showRuntimeLine(line);
    return command;
}

void DesktopConnectorManager::endRuntimeCommand(std::unique_ptr<RuntimeCommand> command) {
    command.reset();
    refreshRuntimeUpdateState();
}

void DesktopConnectorManager::showRuntimeLine(const QString& line) {
    m_runtimeUpdateStatusText.set(QStringLiteral("Runtime: ") + line);
}

void DesktopConnectorManager::reportRuntimeFailure(const MacRuntimeUpdateResult& result) {
    m_lastError.set(result.message);
    showRuntimeLine(result.message);
}

Task<> DesktopConnectorManager::checkRuntimeUpdates(bool showError) {
    auto command = beginRuntimeCommand(QStringLiteral("Checking..."));
    if (!command) {
        co_return;
    }
    auto check = runtimeUpdater().checkForUpdates();
    const MacRuntimeUpdateResult result = co_await std::move(check);
    showRuntimeLine(result.message);
    if (!result.succeeded && showError) {
        m_lastError.set(result.message);
    }
    endRuntimeCommand(std::move(command));
}

Task<> DesktopConnectorManager::applyRuntimeUpdate() {
    auto command = beginRuntimeCommand(QStringLiteral("Updating..."));
    if (!command) {
        co_return;
    }
    auto update = runtimeUpdater().applyAvailableUpdate();
    const MacRuntimeUpdateResult result = co_await std::move(update);
    if (result.succeeded) {
        // Also when there was nothing to install: Update always ends with a fresh connector.
        co_await confirmUpdatedRuntime();
    } else {
        reportRuntimeFailure(result);
    }
    endRuntimeCommand(std::move(command));
}

Task<> DesktopConnectorManager::confirmUpdatedRuntime() {
    const auto updated = currentVersion();
    const bool healthy = co_await restartRuntimeAndWaitForHealth();
    if (healthy) {
        runtimeUpdater().markRuntimeHealthy(m_activeRuntime);
        showRuntimeLine(QStringLiteral("Updated"));
    } else if (currentVersion() == updated) {
        co_await abandonRuntime();
    } else if (pendingVersion()) {
        // A launch has brought another version meanwhile, which has yet to have its time, and
        // which no other watch looks after.
        co_await validatePendingRuntimeHealth();
    }
}

Task<> DesktopConnectorManager::abandonRuntime() {
    if (m_isShuttingDown) {
        // It was stopped by the quit, which says nothing about its health.
        co_return;
    }
    showRuntimeLine(runtimeUpdater().rollback().message);
    co_await restartRuntimeAndWaitForHealth();
}

Task<> DesktopConnectorManager::rollbackRuntime() {
    auto command = beginRuntimeCommand(QStringLiteral("Rolling back..."));
    if (!command) {
        co_return;
    }
    const MacRuntimeUpdateResult result = runtimeUpdater().rollback();
    if (result.succeeded) {
        co_await restartRuntimeAndWaitForHealth();
    } else {
        reportRuntimeFailure(result);
    }
    endRuntimeCommand(std::move(command));
}

std::optional<QString> DesktopConnectorManager::currentVersion() {
    const auto state = runtimeUpdater().currentState();
    return state ? std::optional(state->currentVersion) : std::nullopt;
}

std::optional<QString> DesktopConnectorManager::pendingVersion() {
    const auto state = runtimeUpdater().currentState();
    const bool isPending = state && state->pendingHealthCheck.value_or(false);
    return isPending ? std::optional(state->currentVersion) : std::nullopt;
}

void DesktopConnectorManager::confirmPendingRuntime() {
    if (pendingVersion() && !*m_runtimeUpdateInProgress) {
        startOwnTask(
            [](DesktopConnectorManager& self) { return self.validatePendingRuntimeHealth(); });
    }
}

Task<> DesktopConnectorManager::validatePendingRuntimeHealth() {
    const auto watched = pendingVersion();
    std::optional<RuntimeWatch> watch;
    if (watched) {
        if (m_watchedVersions.contains(*watched)) {
            // A connector that keeps exiting is launched over and over. Each watch ends with a
            // restart when nothing can be rolled back to, so a second one would never let it be.
            co_return;
        }
        watch.emplace(m_watchedVersions, *watched);
    }
    const bool healthy = co_await waitForHealthyStatusOnly();
    if (healthy) {
        runtimeUpdater().markRuntimeHealthy(m_activeRuntime);
        refreshRuntimeUpdateState();
        co_return;
    }
    // Once it is rolled back, by a command, another rollback would roll forward again.
    if (watched && pendingVersion() == watched) {
        co_await abandonRuntime();
    }
}

Task<bool> DesktopConnectorManager::restartRuntimeAndWaitForHealth() {
    m_statusText.set(QStringLiteral("Restarting..."));
    co_await restartOnSamePort();
    const bool healthy = co_await waitForHealthyStatusOnly();
    co_return healthy;
}

void DesktopConnectorManager::refreshRuntimeUpdateState() {
    m_runtimeUpdateAvailable.set(runtimeUpdater().availableVersion().has_value());
    m_runtimeCanRollback.set(canRollback());
    showRuntimeLine(runtimeLine());
}

bool DesktopConnectorManager::canRollback() {
    const auto state = runtimeUpdater().currentState();
    return state && state->previousVersion && !state->previousVersion->isEmpty();
}

QString DesktopConnectorManager::runtimeLine() {
    const auto& lastStatus = runtimeUpdater().lastStatus();
    if (lastStatus && !lastStatus->isEmpty()) {
        return *lastStatus;
    }
    if (m_activeRuntime && !m_activeRuntime->isLegacy) {
        return m_activeRuntime->version.value_or(QStringLiteral("external"));
    }
    return QStringLiteral("Bundled");
}

} // namespace orvanta
