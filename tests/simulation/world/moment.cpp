// SPDX-License-Identifier: MIT
#include "simulation/world/moment.h"

#include <cstdio>

namespace orvanta::simulation {

std::string written(Moment moment) {
    char text[64];
    std::snprintf(text, sizeof text, "%02lld:%02lld:%02lld.%06lld",
                  static_cast<long long>(moment % kDay / kHour),
                  static_cast<long long>(moment % kHour / kMinute),
                  static_cast<long long>(moment % kMinute / kSecond),
                  static_cast<long long>(moment % kSecond));
    const Moment days = moment / kDay;
    return days > 0 ? std::to_string(days) + "d " + text : std::string(text);
}

} // namespace orvanta::simulation
