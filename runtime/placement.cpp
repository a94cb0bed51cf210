// SPDX-License-Identifier: MIT
#include "runtime/placement.h"

#include "platform/background_work.h"

#include <algorithm>

namespace orvanta {

MacRuntimeUpdater::Placement::Placement(MacRuntimeUpdater& updater, const QString& version)
    : m_updater(updater), m_name(directoryName(version)) {
    m_updater.m_placing.push_back(m_name);
}

MacRuntimeUpdater::Placement::~Placement() {
    auto& placing = m_updater.m_placing;
    placing.erase(std::find(placing.begin(), placing.end(), m_name));
}

Task<> MacRuntimeUpdater::awaitTurnToPlace(QString version) {
    const QString name = directoryName(version);
    while (std::find(m_placing.begin(), m_placing.end(), name) != m_placing.end()) {
        // The worker takes its jobs in order, so this one ends after the one that makes the
        // directory.
        std::function<void()> nothing = [] {};
        auto run = m_platform.backgroundWork.run(std::move(nothing));
        co_await std::move(run);
    }
}

} // namespace orvanta
