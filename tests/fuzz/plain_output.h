// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta::fuzz {

/// The non-empty lines of one chunk of output, every byte that is no UTF-8 as U+FFFD.
std::vector<std::u32string> plainLines(std::string_view chunk);

/// The port that a line announces, found by regular expressions.
std::optional<std::int64_t> plainPort(const std::u32string& line);

} // namespace orvanta::fuzz
