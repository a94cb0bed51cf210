// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <vector>

namespace orvanta::tests {

/// What /proc says about processes.
std::vector<pid_t> childrenOf(pid_t parent);
bool isAlive(pid_t pid); ///< false for a zombie
bool isZombie(pid_t pid);
std::size_t descriptorCount(pid_t pid);
std::size_t threadCount(pid_t pid);
std::size_t residentKiB(pid_t pid);

} // namespace orvanta::tests
