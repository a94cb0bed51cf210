// SPDX-License-Identifier: MIT
#pragma once

#include "platform/child_process.h"
#include "platform/posix/exit_watch.h"

#include <QObject>

#include <vector>

namespace orvanta {

class RunningChild;

/// Starts programs with posix_spawn.
///
/// Keeps each child's pipes and exit watch until both streams have ended and the exit has been
/// reported, whoever else holds the child. When the launcher itself ends, it closes the pipes and
/// leaves the children alone: no signal, no wait, no further callback.
///
/// Should something else in the process have reaped a child, its exit status is reported as -1.
class PosixChildProcessLauncher : public ChildProcessLauncher {
public:
    /// Makes sure that exited children wait to be reaped, even when this process was started with
    /// SIGCHLD ignored. Needs a QCoreApplication.
    explicit PosixChildProcessLauncher(ExitWatchFactory watchExits);

    /// Not from within a child's callback.
    ~PosixChildProcessLauncher() override;

    std::shared_ptr<ChildProcess> launch(ChildProcessOptions options) override;

private:
    void forgetLater(const RunningChild* child);

    ExitWatchFactory m_watchExits;
    std::vector<std::shared_ptr<RunningChild>> m_children;
    QObject m_context; ///< what is posted to it is dropped when the launcher ends
};

} // namespace orvanta
