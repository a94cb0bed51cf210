// SPDX-License-Identifier: MIT
#include "platform/posix/exit_watch.h"

#include "platform/posix/file_descriptor.h"
#include "platform/posix/posix_error.h"

#include <QObject>

#include <cerrno>
#include <sys/event.h>
#include <system_error>
#include <thread>

namespace orvanta {
namespace {

constexpr uintptr_t kStop = 1;
constexpr uintptr_t kExitedBefore = 2;

struct kevent userEvent(uintptr_t ident, uint16_t flags, uint32_t filterFlags) {
    struct kevent event;
    EV_SET(&event, ident, EVFILT_USER, flags, filterFlags, 0, nullptr);
    return event;
}

bool apply(const FileDescriptor& queue, const struct kevent& change) {
    return ::kevent(queue.get(), &change, 1, nullptr, 0, nullptr) == 0;
}

/// Puts the exit into the queue. The queue knows no process that has exited already; the event of
/// such a one is made by hand.
bool expectExit(const FileDescriptor& queue, pid_t pid) {
    struct kevent exit;
    EV_SET(&exit, pid, EVFILT_PROC, EV_ADD | EV_ONESHOT, NOTE_EXIT, 0, nullptr);
    if (apply(queue, exit)) {
        return true;
    }
    return errno == ESRCH && apply(queue, userEvent(kExitedBefore, EV_ADD, 0)) &&
           apply(queue, userEvent(kExitedBefore, 0, NOTE_TRIGGER));
}

/// A thread of its own waits in a kernel queue for the exit, or for being told to stop. It only
/// looks: the main thread reaps, so that no signal of ours can meet a process number used anew.
class KqueueExitWatch : public ExitWatch {
public:
    KqueueExitWatch(FileDescriptor queue, std::function<void()> onExited)
        : m_queue(std::move(queue)), m_onExited(std::move(onExited)), m_thread([this] { wait(); }) {
    }

    ~KqueueExitWatch() override { stopThread(); }

private:
    void wait() {
        struct kevent event {};
        while (::kevent(m_queue.get(), nullptr, 0, &event, 1, nullptr) < 0 && errno == EINTR) {
        }
        if (event.ident != kStop || event.filter != EVFILT_USER) {
            QMetaObject::invokeMethod(
                &m_context, [this] { report(); }, Qt::QueuedConnection);
        }
    }

    void report() {
        stopThread();
        m_queue.reset();
        m_onExited();
    }

    void stopThread() {
        if (m_thread.joinable()) {
            apply(m_queue, userEvent(kStop, 0, NOTE_TRIGGER));
            m_thread.join();
        }
    }

    FileDescriptor m_queue;
    std::function<void()> m_onExited;
    QObject m_context; ///< what is posted to it is dropped when the watch ends
    std::thread m_thread;
};

} // namespace

std::unique_ptr<ExitWatch> watchExit(pid_t pid, std::function<void()> onExited) {
    FileDescriptor queue(::kqueue());
    if (!queue.isOpen() || !apply(queue, userEvent(kStop, EV_ADD, 0)) || !expectExit(queue, pid)) {
        throw posixError(errno,
                         QStringLiteral("The exit of process %1 could not be watched").arg(pid));
    }
    try {
        return std::make_unique<KqueueExitWatch>(std::move(queue), std::move(onExited));
    } catch (const std::system_error& error) {
        throw posixError(error.code().value(), QStringLiteral("A thread could not be started"));
    }
}

} // namespace orvanta
