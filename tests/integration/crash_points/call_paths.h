// SPDX-License-Identifier: MIT
#pragma once

#include <linux/seccomp.h>
#include <sys/types.h>

#include <cstdint>
#include <string>

namespace orvanta {

// What the arguments of a call say that waits for its verdict

/// The path of another process's open file.
std::string openFile(pid_t process, std::uint64_t descriptor);

/// From the root, of a path that counts from `descriptor`, which may stand for the working
/// directory. An empty path, or address 0, stands for the open file itself.
std::string absolutePath(pid_t process, std::uint64_t descriptor, std::uint64_t path);

} // namespace orvanta
