// SPDX-License-Identifier: MIT
#include "runtime/mac_runtime_updater.h"

#include "base/platform_error.h"
#include "platform/file_manager.h"

#include <set>

namespace orvanta {

namespace {

void removeIfPossible(FileManager& files, const QString& path) {
    try {
        files.removeItem(path);
    } catch (const PlatformError&) {
        // The next confirmation tries again.
    }
}

} // namespace

void MacRuntimeUpdater::markRuntimeHealthy(
    const std::optional<MacRuntimeLaunchConfiguration>& launched) {
    auto state = currentState();
    if (!state) {
        return;
    }
    const bool isStoreVersion = launched && !launched->isLegacy;
    const auto version = isStoreVersion ? launched->version : std::optional(state->currentVersion);
    if (!version || version->isEmpty()) {
        return;
    }
    state->lastHealthyVersion = version;
    state->lastHealthyAt = timestamp();
    if (*version == state->currentVersion) {
        state->pendingHealthCheck = false;
    }
    writeIfPossible(*state);
    cleanupOldVersions(*state, version);
}

void MacRuntimeUpdater::cleanupOldVersions(const MacRuntimeCurrentState& state,
                                           const std::optional<QString>& activeVersion) {
    std::set<QString> kept(m_placing.begin(), m_placing.end());
    kept.insert(directoryName(state.currentVersion));
    for (const auto& version : {state.previousVersion, state.lastHealthyVersion, activeVersion}) {
        if (version) {
            kept.insert(directoryName(*version));
        }
    }
    FileManager& files = m_platform.files;
    for (const QString& name : listIfPossible(files, m_paths.versions())) {
        if (!kept.contains(name)) {
            removeIfPossible(files, m_paths.versions() + QLatin1Char('/') + name);
        }
    }
}

MacRuntimeUpdateResult MacRuntimeUpdater::rollback() {
    auto state = currentState();
    const QString previous = state ? state->previousVersion.value_or(QString()) : QString();
    if (previous.isEmpty()) {
        return ended(false, QStringLiteral("No previous runtime is available."));
    }
    if (!isValidRuntimeRoot(m_paths.version(previous))) {
        return ended(false, QStringLiteral("Previous runtime is incomplete: ") + previous +
                                QLatin1Char('.'));
    }
    state->previousVersion = state->currentVersion;
    state->currentVersion = previous;
    state->availableVersion = std::nullopt;
    state->updatedAt = timestamp();
    state->pendingHealthCheck = false;
    writeIfPossible(*state);
    m_availableVersion = std::nullopt;
    return ended(true, QStringLiteral("Rolled back to ") + previous + QLatin1Char('.'));
}

} // namespace orvanta
