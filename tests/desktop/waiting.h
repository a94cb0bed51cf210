// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>

namespace orvanta::tests {

/// Looks at `condition` every few milliseconds, running the event loop between; false when it did
/// not hold within `limit`.
bool waitFor(const std::function<bool()>& condition,
             std::chrono::milliseconds limit = std::chrono::seconds(10));

/// Whether `condition` holds at every look for as long as `span`.
bool holdsFor(const std::function<bool()>& condition, std::chrono::milliseconds span);

} // namespace orvanta::tests
