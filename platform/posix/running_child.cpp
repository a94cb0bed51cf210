// SPDX-License-Identifier: MIT
#include "platform/posix/running_child.h"

#include "base/platform_error.h"

#include <cerrno>
#include <csignal>
#include <sys/wait.h>

namespace orvanta {
namespace {

constexpr int kStatusUnknown = -1;

/// Waits for a child that has exited. Its exit status, or the signal that ended it.
int reap(pid_t pid) {
    int status = 0;
    pid_t reaped = 0;
    do {
        reaped = ::waitpid(pid, &status, 0);
    } while (reaped < 0 && errno == EINTR);
    if (reaped != pid) {
        return kStatusUnknown;
    }
    return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace

RunningChild::RunningChild(SpawnedProcess process, ChildProcessOptions options,
                           const ExitWatchFactory& watchExits,
                           std::function<void(const RunningChild*)> onFinished)
    : m_pid(process.pid), m_onOutput(std::move(options.onOutput)),
      m_onExit(std::move(options.onExit)), m_onFinished(std::move(onFinished)),
      m_exitWatch(watchOrKill(watchExits)), m_outputReader(makeReader(process.standardOutput)),
      m_errorReader(makeReader(process.standardError)) {}

std::unique_ptr<ExitWatch> RunningChild::watchOrKill(const ExitWatchFactory& watchExits) {
    try {
        return watchExits(m_pid, [this] { reportExit(); });
    } catch (const PlatformError&) {
        ::kill(m_pid, SIGKILL);
        reap(m_pid);
        throw;
    }
}

PipeReader RunningChild::makeReader(FileDescriptor& readEnd) {
    return PipeReader(
        std::move(readEnd),
        [this](QByteArray piece) {
            m_hasSpoken = true;
            if (m_onOutput) {
                m_onOutput(std::move(piece));
            }
        },
        [this] { finishIfEnded(); });
}

void RunningChild::terminate() {
    if (isRunning()) {
        m_isTerminated = true;
        ::kill(m_pid, SIGTERM);
    }
}

void RunningChild::abandon() {
    m_exitWatch.reset();
    m_outputReader.close();
    m_errorReader.close();
}

void RunningChild::reportExit() {
    const int status = reap(m_pid);
    m_hasExited = true;
    if (const auto onExit = std::exchange(m_onExit, nullptr)) {
        onExit(status);
    }
    finishIfEnded();
}

void RunningChild::finishIfEnded() {
    if (m_hasExited && !m_outputReader.isOpen() && !m_errorReader.isOpen()) {
        m_onFinished(this);
    }
}

} // namespace orvanta
