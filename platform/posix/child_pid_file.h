// SPDX-License-Identifier: MIT
#pragma once

#include "platform/child_process.h"
#include "platform/posix/process_identity.h"

#include <vector>

namespace orvanta {

/// A running child to remember.
struct KnownChild {
    pid_t pid;
    /// Whether it runs its own executable by now: a script may run another one in its place.
    bool isSettled;
};

/// Remembers which children run, so that what a killed process leaves behind is found by its
/// successor. Best effort: when it cannot be written, children run all the same.
///
/// The file is replaced as a whole, and not synchronised: it means nothing once the system has
/// gone down. Main thread only.
class ChildPidFile {
public:
    /// Reads what the predecessor left in `directory`, which no other running instance uses. A
    /// line that cannot be understood counts as absent.
    explicit ChildPidFile(const QString& directory);

    /// Sends SIGTERM to each child of the predecessor that still runs; those that go on in spite of
    /// it stay remembered, for the successor to try again. To be called before anything is
    /// remembered; has nothing to do from the second call on.
    void terminateLeftovers();

    /// Remembers these as the only running children of our own. Without any to remember the file
    /// is removed.
    void remember(const std::vector<KnownChild>& children);

    /// The same, and that `next` is about to be launched: should this process be killed before it
    /// knows the number of the new child, that is found all the same.
    void remember(const std::vector<KnownChild>& children, const ChildProcessOptions& next);

private:
    /// With `bytes`, and the leftovers that go on behind them.
    void replaceFile(QByteArray bytes);

    QByteArray m_path;
    std::vector<ProcessIdentity> m_leftovers;
    std::vector<ProcessIdentity> m_signalled; ///< leftovers that may still run
    std::optional<ExpectedProcess> m_launching;
};

} // namespace orvanta
