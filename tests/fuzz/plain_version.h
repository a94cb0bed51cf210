// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvanta::fuzz {

struct PlainVersion {
    std::vector<std::int64_t> core;
    std::vector<std::u16string> prerelease;
};

/// The rules of runtime versions, written down once more, plainly.
PlainVersion plainVersion(const std::u16string& text);
int comparePlainVersions(const std::u16string& left, const std::u16string& right);

} // namespace orvanta::fuzz
