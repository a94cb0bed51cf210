// SPDX-License-Identifier: MIT
#pragma once

#include "soak/soaked_tray.h"

#include <random>

namespace orvanta::soak {

/// Restarts of the connector as fast as the tray does them. Each has brought another process, which
/// is the only child; the connector that was launched at the end of each turn has begun to run.
class Restarts {
public:
    Restarts(SoakedTray& tray, std::mt19937_64& random) : m_tray(tray), m_random(random) {}

    /// One or two restarts.
    void next();

    int count() const { return m_asked + m_retried + m_crashed; }
    int asked() const { return m_asked; }     ///< by host control
    int retried() const { return m_retried; } ///< at once, since a requested port had failed
    int crashed() const { return m_crashed; } ///< after the delay of a second

private:
    void kill();

    SoakedTray& m_tray;
    std::mt19937_64& m_random;
    int m_asked = 0;
    int m_retried = 0;
    int m_crashed = 0;
};

} // namespace orvanta::soak
