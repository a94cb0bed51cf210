// SPDX-License-Identifier: MIT
#include "platform/curl/watched_exit.h"

#include "base/platform_error.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <cerrno>
#include <csignal>
#include <set>
#include <sys/wait.h>
#include <utility>

namespace orvanta {
namespace {

using Killed = std::set<std::shared_ptr<WatchedExit>>;

/// Those that nobody else may hold any more. Never destroyed: at the end of the process the system
/// reaps them.
Killed& killed() {
    static auto* const killed = new Killed;
    return *killed;
}

} // namespace

WatchedExit::WatchedExit(pid_t pid, std::function<void()> onExit)
    : m_pid(pid), m_onExit(std::move(onExit)) {}

std::shared_ptr<WatchedExit> WatchedExit::of(pid_t pid, const ExitWatchFactory& watchExits,
                                             std::function<void()> onExit) {
    const std::shared_ptr<WatchedExit> exit(new WatchedExit(pid, std::move(onExit)));
    exit->watch(watchExits);
    return exit;
}

void WatchedExit::watch(const ExitWatchFactory& watchExits) {
    try {
        m_watch = watchExits(m_pid, [this] { reap(); });
    } catch (const PlatformError&) {
        m_onExit = nullptr; // whom that would call is not there yet
        ::kill(m_pid, SIGKILL);
        reap();
        throw;
    }
}

void WatchedExit::kill() {
    m_onExit = nullptr;
    if (!m_status) {
        ::kill(m_pid, SIGKILL);
        killed().insert(shared_from_this());
    }
}

void WatchedExit::reap() {
    int status = 0;
    pid_t reaped = 0;
    do {
        reaped = ::waitpid(m_pid, &status, 0);
    } while (reaped < 0 && errno == EINTR);
    m_status = reaped == m_pid ? status : -1;
    if (const auto onExit = std::exchange(m_onExit, nullptr)) {
        onExit();
    }
    // Not at once: the watch is calling.
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [self = shared_from_this()] { killed().erase(self); },
        Qt::QueuedConnection);
}

} // namespace orvanta
