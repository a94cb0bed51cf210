// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace orvanta {

/// Runs the main loop until `condition` holds. False when it does not within ten seconds.
[[nodiscard]] bool waitUntil(const std::function<bool()>& condition);

/// Runs the main loop until it has nothing more to do.
void settle();

} // namespace orvanta
