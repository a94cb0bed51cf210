// SPDX-License-Identifier: MIT
#pragma once

#include <sys/stat.h>

namespace orvanta {

/// The permission bits that copies keep. A copy never runs with the rights of its owner.
constexpr mode_t kPermissions = 0777;

/// Copies what is left of one open file to another, in the kernel where that is possible. 0 or the
/// system's error number.
int copyContents(int from, int to);

/// Gives an open file or directory the mode and the times of `status`. 0 or the system's error
/// number.
int copyAttributes(const struct stat& status, int to);

} // namespace orvanta
