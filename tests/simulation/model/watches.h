// SPDX-License-Identifier: MIT
#pragma once

#include "simulation/world/moment.h"

#include <QString>

#include <vector>

namespace orvanta::simulation {

/// The watches of pending runtimes that may be under way. A version has one at a time, however
/// often it is launched, and each watch may restart the connector once.
class Watches {
public:
    /// A pending version is launched.
    void began(const QString& version, Moment now);
    /// The connector is started again; false when no watch has a restart left.
    bool spend(Moment now);
    bool mayRestart() const;
    /// A status came: whatever waited for it has ended.
    void answered();
    void slept(Moment duration);
    void expire(Moment now);

private:
    /// One that has not restarted the connector yet, or still waits after it.
    struct Watch {
        QString version;
        Moment until;
        bool isSpent = false;
    };
    std::vector<Watch> m_watches;
};

} // namespace orvanta::simulation
