// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>

namespace orvanta {

/// The time of day, for records that people read. Never used to measure how long something takes.
class WallClock {
public:
    virtual ~WallClock() = default;

    /// Now, in UTC.
    virtual QDateTime now() const = 0;
};

} // namespace orvanta
