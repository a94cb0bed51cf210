// SPDX-License-Identifier: MIT
#include "platform/posix/output_stream.h"

#include "platform/posix/terminal_device.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvanta {
namespace {

/// A pipe that reports room takes this much without blocking.
constexpr qsizetype kLargestWrite = PIPE_BUF;

bool isSocket(int descriptor) {
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 && S_ISSOCK(status.st_mode);
}

} // namespace

OutputStream::OutputStream(int descriptor, std::function<void()> onDrained)
    : m_shared(descriptor), m_own(reopenNonBlocking(descriptor, O_WRONLY)),
      m_isSocket(isSocket(descriptor)), m_onDrained(std::move(onDrained)) {}

void OutputStream::write(const QByteArray& bytes) {
    if (!m_hasEnded) {
        m_waiting += bytes;
        flush();
    }
}

bool OutputStream::canTakeBytes() const {
    pollfd question{target(), POLLOUT, 0};
    return ::poll(&question, 1, 0) != 0;
}

/// False when the reader takes nothing more for now.
bool OutputStream::writeOnce() {
    const auto size = static_cast<std::size_t>(std::min(m_waiting.size(), kLargestWrite));
    const ssize_t count = m_isSocket ? ::send(target(), m_waiting.constData(), size, MSG_DONTWAIT)
                                     : ::write(target(), m_waiting.constData(), size);
    if (count >= 0) {
        m_waiting.remove(0, count);
        return true;
    }
    if (errno == EAGAIN || errno == EWOULDBLOCK) {
        return false;
    }
    if (errno != EINTR) {
        m_hasEnded = true;
        m_waiting.clear();
    }
    return true;
}

void OutputStream::flush() {
    bool isTaking = true;
    while (!m_waiting.isEmpty() && isTaking) {
        isTaking = canTakeBytes() && writeOnce();
    }
    setWaitingForReader(!m_waiting.isEmpty());
}

void OutputStream::setWaitingForReader(bool isWaiting) {
    if (isWaiting && !m_notifier) {
        m_notifier = std::make_unique<QSocketNotifier>(target(), QSocketNotifier::Write);
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] {
            flush();
            if (m_waiting.isEmpty()) {
                m_onDrained();
            }
        });
    }
    if (m_notifier) {
        m_notifier->setEnabled(isWaiting);
    }
}

} // namespace orvanta
