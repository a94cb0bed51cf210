// SPDX-License-Identifier: MIT
#pragma once

#include <linux/seccomp.h>

#include <string>

namespace orvanta {

/// From now on every system call of this process, and of those it starts, that can change the file
/// system waits for the verdict of whoever holds the descriptor returned. -1 where the system does
/// not offer that.
int submitMutatingCalls();

/// "NAME PATH" of a call that waits for its verdict. The path is as the caller has given it; that
/// of the open file for calls on one.
std::string describe(const seccomp_notif& call);

} // namespace orvanta
