// SPDX-License-Identifier: MIT
#include "runtime/mac_runtime_updater.h"

#include "base/platform_error.h"
#include "runtime/version_ordering.h"

namespace orvanta {

namespace {

constexpr int kReadAttempts = 2;

} // namespace

std::optional<MacRuntimeLaunchConfiguration> MacRuntimeUpdater::currentLaunchConfiguration() {
    const auto state = currentState();
    if (!state) {
        return std::nullopt;
    }
    const QString root = m_paths.version(state->currentVersion);
    if (!isValidRuntimeRoot(root)) {
        m_lastStatus = QStringLiteral("Runtime ") + state->currentVersion +
                       QStringLiteral(" is incomplete; using bundled runtime.");
        return std::nullopt;
    }
    return MacRuntimeLaunchConfiguration{.localServerRoot = root + QStringLiteral("/local-server"),
                                         .nodeBinaryURL =
                                             root + QStringLiteral("/node-runtime/node"),
                                         .version = state->currentVersion,
                                         .isLegacy = false};
}

Task<MacRuntimeLaunchConfiguration> MacRuntimeUpdater::resolveLaunchConfiguration() {
    const MacRuntimeUpdateSettings settings = loadSettings();
    if (!settings.enabled) {
        m_lastStatus = QStringLiteral("Runtime updater disabled; using bundled runtime.");
        co_return shippedLaunchConfiguration();
    }
    auto load = loadOrSeed(settings.channel);
    const MacRuntimeCurrentState loaded = co_await std::move(load);
    auto promotion = promoteBundledRuntimeIfNewer(loaded);
    const MacRuntimeCurrentState state = co_await std::move(promotion);
    if (settings.checkOnStartup) {
        auto check = checkAtStart(settings, state);
        co_await std::move(check);
    }
    co_return currentLaunchConfiguration().value_or(shippedLaunchConfiguration());
}

Task<MacRuntimeCurrentState> MacRuntimeUpdater::loadOrSeed(QString channel) {
    // A new store in place of one that is there would lose its versions, so a read that fails, be
    // it for want of a descriptor, is tried again.
    for (int attempt = 0; attempt < kReadAttempts; ++attempt) {
        if (const auto state = currentState()) {
            co_return *state;
        }
    }
    auto seeding = seedBootstrapRuntime(channel);
    co_return co_await std::move(seeding);
}

Task<> MacRuntimeUpdater::checkAtStart(MacRuntimeUpdateSettings settings,
                                       MacRuntimeCurrentState state) {
    const HeldState held = hold(state);
    auto fetch = fetchManifest(settings);
    const auto manifest = co_await std::move(fetch);
    if (!manifest) {
        co_return;
    }
    state = caughtUp(held);
    recordCheck(*manifest, state);
    const QString minimum = manifest->minRuntimeVersion.value_or(QString());
    if (!minimum.isEmpty() && compareVersions(state.currentVersion, minimum) == -1) {
        auto installation = installRequired(*manifest, settings);
        co_await std::move(installation);
    }
}

Task<> MacRuntimeUpdater::installRequired(MacRuntimeManifest manifest,
                                          MacRuntimeUpdateSettings settings) {
    m_lastStatus =
        QStringLiteral("Required runtime update to ") + manifest.version + QStringLiteral("...");
    auto installation = applyManifest(manifest, settings);
    const MacRuntimeUpdateResult result = co_await std::move(installation);
    if (!result.succeeded) {
        throw PlatformError(QStringLiteral("OrvantaMacRuntimeUpdater"), 1,
                            QStringLiteral("Required runtime update failed: ") + result.message);
    }
}

} // namespace orvanta
