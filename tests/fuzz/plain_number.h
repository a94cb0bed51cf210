// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace orvanta::fuzz {

/// The value of `digits`, nothing but ASCII digits, or nothing when it does not fit.
std::optional<std::int64_t> plainDigits(bool isNegative, const std::string& digits);

/// The value of a valid JSON number that has no fraction and fits, else nothing.
std::optional<std::int64_t> plainInteger(const std::string& number);

} // namespace orvanta::fuzz
