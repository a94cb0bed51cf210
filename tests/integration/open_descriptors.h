// SPDX-License-Identifier: MIT
#pragma once

#include <set>

namespace orvanta {

/// The descriptors open in this process.
std::set<int> openDescriptors();

inline int descriptorCount() {
    return static_cast<int>(openDescriptors().size());
}

} // namespace orvanta
