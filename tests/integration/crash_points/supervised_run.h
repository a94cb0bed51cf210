// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvanta {

/// What is done to a process at one of its calls that are watched.
struct Fault {
    enum class Kind {
        none,
        killed,            ///< before the call, together with the program that makes it for it
        killedAlone,       ///< before the call, which a program that it has started makes
        failing,           ///< the call fails
        failingFromThenOn, ///< so do all after it
        failingAtPath,     ///< so do all at the same path
    };
    Kind kind = Kind::none;
    int call = 0; ///< the first is 1
    int error = 0;
    std::string path = {}; ///< where calls fail, for `failingAtPath` only
};

struct WatchedCall {
    std::string description;
    std::string path = {};       ///< of one that reads
    bool opens = false;          ///< a file for reading
    bool byOtherProgram = false; ///< not by the process itself but by one that it has started
    bool failed = false;         ///< by the fault
};

/// Which calls count.
struct Watch {
    /// Those that read there or below; when empty, those that change the file system anywhere.
    std::string readingBelow = {};
    /// Called for each while it waits for its verdict, if there is such a function.
    std::function<void(const WatchedCall&)> onCall = {};
};

/// What an operation itself says of its end.
struct Report {
    bool succeeded = false;
    std::string message;
};

struct SupervisedEnding {
    std::vector<WatchedCall> calls;
    /// Nothing when the process was killed.
    std::optional<Report> report;
    bool wasKilled = false; ///< by the fault
};

/// Runs `operation` in a process of its own, to the end of all that it starts. The caller has no
/// other children, and one thread. Nothing where the system cannot hold calls up.
std::optional<SupervisedEnding> runSupervised(const std::function<Report()>& operation,
                                              const Fault& fault, const Watch& watch = {});

} // namespace orvanta
