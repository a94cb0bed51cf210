// SPDX-License-Identifier: MIT
#pragma once

#include "platform/environment.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace orvanta {

/// What to run and whom to tell. Every callback runs on the main thread, on a turn of the loop of
/// its own, never inside `launch`. They may come in any order among each other, also after the
/// `ChildProcess` has been let go.
struct ChildProcessOptions {
    QString executable; ///< absolute path; no search
    QStringList arguments;
    QString workingDirectory;
    EnvironmentVariables environment; ///< the child's whole environment
    /// A non-empty piece of standard output or standard error, as it came; at most 64 KiB.
    std::function<void(QByteArray)> onOutput;
    /// Called exactly once: the exit status, or the number of the signal that ended the child.
    std::function<void(int)> onExit;
};

/// A launched child. Letting go of it neither stops nor waits for the child: its output is read
/// until both streams end, its exit is still reported.
class ChildProcess {
public:
    virtual ~ChildProcess() = default;

    /// True until the exit has been noticed, which is at the latest when `onExit` runs.
    virtual bool isRunning() const = 0;

    /// Sends SIGTERM once, if the child is still running, and returns at once.
    virtual void terminate() = 0;
};

/// Starts programs.
///
/// The child gets the environment given, the working directory given, /dev/null as standard input
/// and one pipe each for standard output and standard error. It inherits no other descriptor, no
/// blocked and no ignored signal. It runs in a process group of its own, so that a Ctrl-C meant
/// for the tray does not reach it.
class ChildProcessLauncher {
public:
    virtual ~ChildProcessLauncher() = default;

    /// Throws `PlatformError` when the system refuses to run the program; no callback follows
    /// then. Main thread only.
    virtual std::shared_ptr<ChildProcess> launch(ChildProcessOptions options) = 0;
};

} // namespace orvanta
