// SPDX-License-Identifier: MIT
#include "runtime/mac_runtime_updater.h"

#include "base/platform_error.h"
#include "orvanta_build_constants.h"
#include "platform/background_work.h"
#include "platform/file_manager.h"
#include "platform/identifiers.h"
#include "runtime/placement.h"
#include "runtime/runtime_layout.h"

namespace orvanta {

namespace {

MacRuntimeMetadata bootstrapMetadata(const QString& now) {
    return {.version = QStringLiteral("bootstrap"),
            .platform = QString::fromLatin1(build::kPlatform),
            .arch = QString::fromLatin1(build::kArch),
            .builtAt = now,
            .nodeVersion = std::nullopt,
            .cloudflaredVersion = std::nullopt};
}

} // namespace

bool MacRuntimeUpdater::isShippedRuntimeComplete() const {
    return isValidRuntimeRoot(m_resourceRoot);
}

std::optional<MacRuntimeMetadata> MacRuntimeUpdater::shippedMetadata() const {
    return readMetadata(m_platform.files,
                        m_resourceRoot + QStringLiteral("/local-server/runtime.json"));
}

Task<> MacRuntimeUpdater::ensureShippedVersion(MacRuntimeMetadata metadata) {
    requireDirectoryName(metadata.version);
    const QString destination = m_paths.version(metadata.version);
    if (isValidRuntimeRoot(destination)) {
        co_return;
    }
    const VersionAssembly assembly{
        .source = m_resourceRoot,
        .work = m_paths.work(metadata.version, m_platform.identifiers.uuid()),
        .versions = m_paths.versions(),
        .destination = destination,
        .metadata = metadata.encode()};
    std::function<void()> job = [&files = m_platform.files, assembly] {
        // Another operation may have made it while this one waited for its turn; a runtime that is
        // in use by now must not be replaced.
        if (!orvanta::isValidRuntimeRoot(files, assembly.destination)) {
            assembleVersion(files, assembly);
        }
    };
    auto run = m_platform.backgroundWork.run(std::move(job));
    co_await std::move(run);
}

Task<MacRuntimeCurrentState> MacRuntimeUpdater::seedBootstrapRuntime(QString channel) {
    if (!isShippedRuntimeComplete()) {
        throw PlatformError(QStringLiteral("OrvantaMacRuntimeUpdater"), 2,
                            QStringLiteral("Bundled runtime is incomplete."));
    }
    const auto before = currentState();
    const auto shipped = shippedMetadata();
    const MacRuntimeMetadata metadata = shipped ? *shipped : bootstrapMetadata(timestamp());
    auto turn = awaitTurnToPlace(metadata.version);
    co_await std::move(turn);
    const Placement placement(*this, metadata.version);
    auto copy = ensureShippedVersion(metadata);
    co_await std::move(copy);
    if (const auto recorded = currentState(); recorded && recorded != before) {
        // Another operation has made the store meanwhile.
        co_return *recorded;
    }
    MacRuntimeCurrentState state;
    state.currentVersion = metadata.version;
    state.channel = channel;
    state.updatedAt = timestamp();
    state.pendingHealthCheck = false;
    writeIfPossible(state);
    m_lastStatus = QStringLiteral("Seeded ") + metadata.version;
    co_return state;
}

Task<MacRuntimeCurrentState>
MacRuntimeUpdater::promoteBundledRuntimeIfNewer(MacRuntimeCurrentState current) {
    const auto shipped = isShippedRuntimeComplete() ? shippedMetadata() : std::nullopt;
    if (!shipped || !isNewer(shipped->version, current)) {
        co_return current;
    }
    const HeldState held = hold(current);
    auto turn = awaitTurnToPlace(shipped->version);
    co_await std::move(turn);
    const Placement placement(*this, shipped->version);
    auto copy = ensureShippedVersion(*shipped);
    co_await std::move(copy);
    MacRuntimeCurrentState state = caughtUp(held);
    if (!isNewer(shipped->version, state)) {
        co_return state;
    }
    state.previousVersion = state.currentVersion;
    state.currentVersion = shipped->version;
    state.pendingHealthCheck = false;
    state.availableVersion = std::nullopt;
    state.updatedAt = timestamp();
    writeIfPossible(state);
    m_availableVersion = std::nullopt;
    m_lastStatus = QStringLiteral("Promoted bundled runtime ") + shipped->version;
    co_return state;
}

} // namespace orvanta
