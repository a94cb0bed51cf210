// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <sys/types.h>

namespace orvanta {

/// Notices the exit of one child. Destroying it ends the watch.
class ExitWatch {
public:
    virtual ~ExitWatch() = default;
};

/// Calls `onExited` once, on the main thread, on a turn of the loop of its own, when `pid` has
/// exited. The child is not reaped: its status is still there to be waited for, and a wait for it
/// returns at once. The watch may not be destroyed from within `onExited`, and has freed what it
/// held of the system by then. Throws `PlatformError` when the child cannot be watched.
/// `pid` is a child of this process that nobody has reaped. Main thread only.
using ExitWatchFactory =
    std::function<std::unique_ptr<ExitWatch>(pid_t pid, std::function<void()> onExited)>;

/// The way of the system this is built for; found in platform/linux or platform/macos.
std::unique_ptr<ExitWatch> watchExit(pid_t pid, std::function<void()> onExited);

} // namespace orvanta
