// SPDX-License-Identifier: MIT
#include "platform/posix/exit_watch.h"

#include "platform/posix/file_descriptor.h"
#include "platform/posix/posix_error.h"

#include <QSocketNotifier>

#include <cerrno>
#include <sys/syscall.h>
#include <unistd.h>

namespace orvanta {
namespace {

/// A process descriptor becomes readable when the process exits.
class PidfdExitWatch : public ExitWatch {
public:
    PidfdExitWatch(FileDescriptor process, std::function<void()> onExited)
        : m_process(std::move(process)), m_onExited(std::move(onExited)),
          m_notifier(m_process.get(), QSocketNotifier::Read) {
        QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier,
                         [this] { report(); });
    }

private:
    void report() {
        m_notifier.setEnabled(false);
        m_process.reset();
        m_onExited();
    }

    FileDescriptor m_process;
    std::function<void()> m_onExited;
    QSocketNotifier m_notifier;
};

} // namespace

std::unique_ptr<ExitWatch> watchExit(pid_t pid, std::function<void()> onExited) {
    FileDescriptor process(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
    if (!process.isOpen()) {
        throw posixError(errno,
                         QStringLiteral("The exit of process %1 could not be watched").arg(pid));
    }
    return std::make_unique<PidfdExitWatch>(std::move(process), std::move(onExited));
}

} // namespace orvanta
