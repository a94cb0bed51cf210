// SPDX-License-Identifier: MIT
#include "platform/posix/child_process.h"

#include "platform/posix/running_child.h"
#include "platform/posix/spawn.h"

#include <QScopeGuard>
#include <QTimer>

#include <chrono>
#include <csignal>

namespace orvanta {
namespace {

constexpr std::chrono::milliseconds kNotesDelay{20};

/// A parent that ignores SIGCHLD hands that down to us, and the system then throws away the exit
/// status of every child.
void keepExitedChildren() {
    struct sigaction current {};
    ::sigaction(SIGCHLD, nullptr, &current);
    if (current.sa_handler == SIG_IGN) {
        ::signal(SIGCHLD, SIG_DFL);
    }
}

} // namespace

PosixChildProcessLauncher::PosixChildProcessLauncher(ExitWatchFactory watchExits,
                                                     std::optional<ChildPidFile> pidFile)
    : m_watchExits(std::move(watchExits)), m_pidFile(std::move(pidFile)) {
    keepExitedChildren();
}

PosixChildProcessLauncher::~PosixChildProcessLauncher() {
    rememberChildren();
    for (const auto& child : m_children) {
        child->abandon();
    }
}

std::shared_ptr<ChildProcess> PosixChildProcessLauncher::launch(ChildProcessOptions options) {
    if (m_pidFile) {
        m_pidFile->terminateLeftovers();
        m_pidFile->remember(childrenToRemember(), options);
    }
    const auto remembering = qScopeGuard([this] { rememberChildren(); });
    options.onOutput = rememberingAtFirst(std::move(options.onOutput));
    SpawnedProcess process = spawnProcess(options);
    auto child = std::make_shared<RunningChild>(
        std::move(process), std::move(options), m_watchExits,
        [this](const RunningChild* finished) { forgetLater(finished); });
    m_children.push_back(child);
    return child;
}

/// Once a child speaks, it is known by its executable too. What it says first is waited for by
/// people, and what that sets going comes before our notes.
std::function<void(QByteArray)>
PosixChildProcessLauncher::rememberingAtFirst(std::function<void(QByteArray)> onOutput) {
    return [this, onOutput = std::move(onOutput), isFirst = true](QByteArray piece) mutable {
        if (std::exchange(isFirst, false)) {
            QTimer::singleShot(kNotesDelay, &m_context, [this] { rememberChildren(); });
        }
        if (onOutput) {
            onOutput(std::move(piece));
        }
    };
}

void PosixChildProcessLauncher::rememberChildren() {
    if (m_pidFile) {
        m_pidFile->remember(childrenToRemember());
    }
}

std::vector<KnownChild> PosixChildProcessLauncher::childrenToRemember() const {
    std::vector<KnownChild> known;
    for (const auto& child : m_children) {
        if (child->isRunning() && !child->isTerminated()) {
            known.push_back({child->pid(), child->hasSpoken()});
        }
    }
    return known;
}

void PosixChildProcessLauncher::forgetLater(const RunningChild* child) {
    const auto forget = [this, child] {
        std::erase_if(m_children, [child](const auto& kept) { return kept.get() == child; });
    };
    QMetaObject::invokeMethod(&m_context, forget, Qt::QueuedConnection);
}

} // namespace orvanta
