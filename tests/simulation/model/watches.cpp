// SPDX-License-Identifier: MIT
#include "simulation/model/watches.h"

#include <algorithm>

namespace orvanta::simulation {

namespace {

/// More than twenty attempts take, and the installation that may come before the start.
constexpr Moment kLongest = 20 * kMinute;
/// The least that twenty attempts take.
constexpr Moment kShortestWait = 10 * kSecond;

} // namespace

void Watches::began(const QString& version, Moment now) {
    const auto same = std::find_if(m_watches.begin(), m_watches.end(),
                                   [&](const Watch& each) { return each.version == version; });
    if (same == m_watches.end()) {
        m_watches.push_back({version, now + kLongest});
    } else if (!same->isSpent) {
        same->until = now + kLongest;
    }
}

bool Watches::spend(Moment now) {
    const auto watch = std::find_if(m_watches.begin(), m_watches.end(),
                                    [](const Watch& each) { return !each.isSpent; });
    if (watch == m_watches.end()) {
        return false;
    }
    *watch = {watch->version, now + kShortestWait, true};
    return true;
}

bool Watches::mayRestart() const {
    return std::any_of(m_watches.begin(), m_watches.end(),
                       [](const Watch& each) { return !each.isSpent; });
}

void Watches::answered() {
    std::erase_if(m_watches, [](const Watch& each) { return each.isSpent; });
}

void Watches::slept(Moment duration) {
    for (Watch& watch : m_watches) {
        watch.until += duration;
    }
}

void Watches::expire(Moment now) {
    std::erase_if(m_watches, [now](const Watch& watch) { return now > watch.until; });
}

} // namespace orvanta::simulation
