// SPDX-License-Identifier: MIT
#pragma once

#include "platform/child_process.h"
#include "platform/posix/child_pid_file.h"
#include "platform/posix/exit_watch.h"

#include <QObject>

#include <optional>
#include <vector>

namespace orvanta {

class RunningChild;

/// Starts programs with posix_spawn.
///
/// Keeps each child's pipes and exit watch until both streams have ended and the exit has been
/// reported, whoever else holds the child. When the launcher itself ends, it closes the pipes and
/// leaves the children alone: no signal, no wait, no further callback.
///
/// A process that is killed leaves its children running. With a `ChildPidFile`, the first launch
/// of its successor sends them SIGTERM before anything else. So it does with a child that was still
/// running, and had been sent no signal, at the launcher's own end.
///
/// Should something else in the process have reaped a child, its exit status is reported as -1.
class PosixChildProcessLauncher : public ChildProcessLauncher {
public:
    /// Makes sure that exited children wait to be reaped, even when this process was started with
    /// SIGCHLD ignored. Without `pidFile` nothing is remembered. Needs a QCoreApplication.
    explicit PosixChildProcessLauncher(ExitWatchFactory watchExits,
                                       std::optional<ChildPidFile> pidFile = std::nullopt);

    /// Not from within a child's callback.
    ~PosixChildProcessLauncher() override;

    std::shared_ptr<ChildProcess> launch(ChildProcessOptions options) override;

private:
    std::function<void(QByteArray)> rememberingAtFirst(std::function<void(QByteArray)> onOutput);
    void rememberChildren();
    std::vector<KnownChild> childrenToRemember() const;
    void forgetLater(const RunningChild* child);

    ExitWatchFactory m_watchExits;
    std::optional<ChildPidFile> m_pidFile;
    std::vector<std::shared_ptr<RunningChild>> m_children;
    QObject m_context; ///< what is posted to it is dropped when the launcher ends
};

} // namespace orvanta
