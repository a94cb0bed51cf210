// SPDX-License-Identifier: MIT
#include "platform/qt/wall_clock.h"

namespace orvanta {

QDateTime QtWallClock::now() const {
    return QDateTime::currentDateTimeUtc();
}

} // namespace orvanta
