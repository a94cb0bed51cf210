// SPDX-License-Identifier: MIT
#pragma once

#include <linux/seccomp.h>

#include <optional>
#include <string>

namespace orvanta {

/// From now on every system call of this process, and of those it starts, that opens a file or asks
/// for what there is waits for the verdict of whoever holds the descriptor returned. -1 where the
/// system does not offer that.
int submitReadingCalls();

/// A call that waits for its verdict and changes nothing.
struct ReadingCall {
    const char* name = "";
    std::string path; ///< from the root
    bool opens = false;
};

/// Nothing for an open that is for more than reading.
std::optional<ReadingCall> readingCall(const seccomp_notif& call);

} // namespace orvanta
