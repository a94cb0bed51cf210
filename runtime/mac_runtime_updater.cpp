// SPDX-License-Identifier: MIT
#include "runtime/mac_runtime_updater.h"

#include "base/platform_error.h"
#include "platform/environment.h"
#include "platform/file_manager.h"
#include "platform/wall_clock.h"
#include "runtime/runtime_layout.h"
#include "runtime/version_ordering.h"

namespace orvanta {

MacRuntimeUpdater::MacRuntimeUpdater(QString resourceRoot, QString stateRoot, Platform& platform)
    : m_resourceRoot(std::move(resourceRoot)), m_stateRoot(std::move(stateRoot)),
      m_paths(m_stateRoot), m_platform(platform) {}

MacRuntimeUpdateSettings MacRuntimeUpdater::loadSettings() const {
    const auto variable =
        m_platform.environment.variables().value("ORVANTA_RUNTIME_UPDATES_ENABLED");
    return effectiveRuntimeUpdateSettings(
        readIfPossible(m_platform.files, m_stateRoot + QStringLiteral("/config.json")),
        variable ? std::optional(QString::fromUtf8(*variable)) : std::nullopt);
}

std::optional<MacRuntimeCurrentState> MacRuntimeUpdater::currentState() const {
    return readCurrentState(m_platform.files, m_paths.currentState());
}

bool MacRuntimeUpdater::hasRequiredLocalServerFiles(const QString& localServer) const {
    return orvanta::hasRequiredLocalServerFiles(m_platform.files, localServer);
}

bool MacRuntimeUpdater::isValidRuntimeRoot(const QString& root) const {
    return orvanta::isValidRuntimeRoot(m_platform.files, root);
}

MacRuntimeLaunchConfiguration MacRuntimeUpdater::shippedLaunchConfiguration() const {
    return {.localServerRoot = m_resourceRoot + QStringLiteral("/local-server"),
            .nodeBinaryURL = m_resourceRoot + QStringLiteral("/node-runtime/node"),
            .version = std::nullopt,
            .isLegacy = true};
}

MacRuntimeUpdater::HeldState MacRuntimeUpdater::hold(const MacRuntimeCurrentState& state) const {
    return {state, currentState()};
}

MacRuntimeCurrentState MacRuntimeUpdater::caughtUp(const HeldState& held) const {
    const auto recorded = currentState();
    return recorded && recorded != held.recorded ? *recorded : held.state;
}

QString MacRuntimeUpdater::timestamp() const {
    return m_platform.wallClock.now().toUTC().toString(Qt::ISODate);
}

void MacRuntimeUpdater::writeIfPossible(const MacRuntimeCurrentState& state) const {
    try {
        writeRecord(m_platform.files, m_paths.currentState(), state.encode());
    } catch (const PlatformError&) {
        // The next operation finds the old record and does the work again.
    }
}

MacRuntimeUpdateResult MacRuntimeUpdater::ended(bool succeeded, const QString& message) {
    m_lastStatus = message;
    return {succeeded, message};
}

bool MacRuntimeUpdater::isNewer(const QString& version, const MacRuntimeCurrentState& state) {
    return compareVersions(version, state.currentVersion) == 1;
}

QString MacRuntimeUpdater::currentLine(const MacRuntimeCurrentState& state) {
    return QStringLiteral("Current (") + state.currentVersion + QLatin1Char(')');
}

} // namespace orvanta
