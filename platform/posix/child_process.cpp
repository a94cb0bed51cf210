// SPDX-License-Identifier: MIT
#include "platform/posix/child_process.h"

#include "platform/posix/running_child.h"
#include "platform/posix/spawn.h"

#include <csignal>

namespace orvanta {
namespace {

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

PosixChildProcessLauncher::PosixChildProcessLauncher(ExitWatchFactory watchExits)
    : m_watchExits(std::move(watchExits)) {
    keepExitedChildren();
}

PosixChildProcessLauncher::~PosixChildProcessLauncher() {
    for (const auto& child : m_children) {
        child->abandon();
    }
}

std::shared_ptr<ChildProcess> PosixChildProcessLauncher::launch(ChildProcessOptions options) {
    SpawnedProcess process = spawnProcess(options);
    auto child = std::make_shared<RunningChild>(
        std::move(process), std::move(options), m_watchExits,
        [this](const RunningChild* finished) { forgetLater(finished); });
    m_children.push_back(child);
    return child;
}

void PosixChildProcessLauncher::forgetLater(const RunningChild* child) {
    const auto forget = [this, child] {
        std::erase_if(m_children, [child](const auto& kept) { return kept.get() == child; });
    };
    QMetaObject::invokeMethod(&m_context, forget, Qt::QueuedConnection);
}

} // namespace orvanta
