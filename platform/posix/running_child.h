// SPDX-License-Identifier: MIT
#pragma once

#include "platform/child_process.h"
#include "platform/posix/exit_watch.h"
#include "platform/posix/pipe_reader.h"
#include "platform/posix/spawn.h"

namespace orvanta {

/// One child, from its launch until its exit has been reported and both its streams have ended.
///
///     open, running --exit--> open, exited        open: a stream has not ended; waits for its end
///          |                      |                     of file, which the last holder of the pipe
///       streams end            streams end              brings about
///          v                      v                running: waits for the exit watch
///     ended, running --exit--> finished
///
/// Main thread only. Not to be destroyed from within one of its callbacks.
class RunningChild : public ChildProcess {
public:
    /// Kills and reaps the child and throws `PlatformError` when its exit cannot be watched.
    /// `onFinished` is called once, last of all callbacks.
    RunningChild(SpawnedProcess process, ChildProcessOptions options,
                 const ExitWatchFactory& watchExits,
                 std::function<void(const RunningChild*)> onFinished);

    bool isRunning() const override { return !m_hasExited; }
    void terminate() override;

    pid_t pid() const { return m_pid; }
    /// Whether it has written anything.
    bool hasSpoken() const { return m_hasSpoken; }
    /// Whether it has been sent a signal by `terminate`.
    bool isTerminated() const { return m_isTerminated; }

    /// Closes the pipes and stops watching, whatever the child does. No callback follows.
    void abandon();

private:
    std::unique_ptr<ExitWatch> watchOrKill(const ExitWatchFactory& watchExits);
    PipeReader makeReader(FileDescriptor& readEnd);
    void reportExit();
    void finishIfEnded();

    const pid_t m_pid;
    const std::function<void(QByteArray)> m_onOutput;
    std::function<void(int)> m_onExit;
    const std::function<void(const RunningChild*)> m_onFinished;
    bool m_hasExited = false;
    bool m_isTerminated = false;
    bool m_hasSpoken = false;
    std::unique_ptr<ExitWatch> m_exitWatch;
    PipeReader m_outputReader;
    PipeReader m_errorReader;
};

} // namespace orvanta
