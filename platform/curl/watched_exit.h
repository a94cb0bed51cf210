// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/exit_watch.h"

#include <functional>
#include <memory>
#include <optional>
#include <sys/types.h>

namespace orvanta {

/// Reaps a child when it has exited, also one that nobody waits for any more. Main thread only.
class WatchedExit : public std::enable_shared_from_this<WatchedExit> {
public:
    /// `onExit` is called once, from the event loop. Kills and reaps the child and throws
    /// `PlatformError` when its exit cannot be watched.
    static std::shared_ptr<WatchedExit> of(pid_t pid, const ExitWatchFactory& watchExits,
                                           std::function<void()> onExit);

    /// What waitpid said, -1 when something else in the process has reaped the child; nothing
    /// before its exit.
    std::optional<int> status() const { return m_status; }

    /// Sends SIGKILL unless the child has exited. `onExit` is not called any more, and the child
    /// is reaped whoever lets go of this object.
    void kill();

private:
    WatchedExit(pid_t pid, std::function<void()> onExit);
    void watch(const ExitWatchFactory& watchExits);
    void reap();

    const pid_t m_pid;
    std::function<void()> m_onExit;
    std::optional<int> m_status;
    std::unique_ptr<ExitWatch> m_watch;
};

} // namespace orvanta
