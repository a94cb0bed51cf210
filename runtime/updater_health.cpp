// SPDX-License-Identifier: MIT
#include "runtime/mac_runtime_updater.h"

#include "base/platform_error.h"
#include "platform/background_work.h"
#include "platform/file_manager.h"
#include "platform/identifiers.h"
#include "platform/main_queue.h"

#include <set>

namespace orvanta {

namespace {

void removeIfPossible(FileManager& files, const QString& path) {
    try {
        files.removeItem(path);
    } catch (const PlatformError&) {
        // The next confirmation tries again, or the next installation if it is in staging.
    }
}

void removeIfEmpty(FileManager& files, const QString& directory) {
    try {
        if (files.contentsOfDirectory(directory).isEmpty()) {
            files.removeItem(directory);
        }
    } catch (const PlatformError&) {
        // It takes no room to speak of.
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
    QStringList retired;
    for (const QString& name : listIfPossible(m_platform.files, m_paths.versions())) {
        if (!kept.contains(name)) {
            retire(name, retired);
        }
    }
    if (!retired.isEmpty()) {
        removeLater(retired);
    }
}

void MacRuntimeUpdater::retire(const QString& name, QStringList& retired) {
    FileManager& files = m_platform.files;
    const QString version = m_paths.versions() + QLatin1Char('/') + name;
    const QString scratch = m_paths.work(name, m_platform.identifiers.uuid());
    try {
        files.createDirectory(m_paths.staging());
        files.moveItem(version, scratch);
        retired.append(scratch);
    } catch (const PlatformError&) {
        removeIfPossible(files, version);
    }
}

void MacRuntimeUpdater::removeLater(const QStringList& retired) {
    std::function<void()> job = [&files = m_platform.files, retired, staging = m_paths.staging()] {
        for (const QString& scratch : retired) {
            removeIfPossible(files, scratch);
        }
        // Whatever else is in there was left by an operation that failed, and is not ours to
        // remove. Assemblies are the worker's, too, so none is under way.
        removeIfEmpty(files, staging);
    };
    startTask(m_platform.mainQueue,
              [&work = m_platform.backgroundWork, job] { return work.run(job); });
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
