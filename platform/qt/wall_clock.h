// SPDX-License-Identifier: MIT
#pragma once

#include "platform/wall_clock.h"

namespace orvanta {

/// The clock of the system.
class QtWallClock : public WallClock {
public:
    QDateTime now() const override;
};

} // namespace orvanta
