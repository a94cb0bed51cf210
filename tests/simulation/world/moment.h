// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace orvanta::simulation {

/// Virtual time in microseconds since the beginning of a run. Whole numbers, so that a run replays
/// to the last bit.
using Moment = std::int64_t;

inline constexpr Moment kMillisecond = 1'000;
inline constexpr Moment kSecond = 1'000 * kMillisecond;
inline constexpr Moment kMinute = 60 * kSecond;
inline constexpr Moment kHour = 60 * kMinute;
inline constexpr Moment kDay = 24 * kHour;

/// "2d 03:04:05.678901", without days on the first one.
std::string written(Moment moment);

} // namespace orvanta::simulation
