// SPDX-License-Identifier: MIT
#include "platform/http_session.h"

#include <algorithm>

namespace orvanta {

HttpLimits postLimits(HttpLimits session) {
    constexpr Seconds kLongestIdle{60.0};
    return {.idle = std::min(session.idle, kLongestIdle), .whole = session.whole};
}

} // namespace orvanta
