// SPDX-License-Identifier: MIT
#include "runtime/placement.h"

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

} // namespace orvanta
