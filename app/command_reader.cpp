// SPDX-License-Identifier: MIT
#include "app/command_reader.h"

#include "platform/posix/terminal_device.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvanta {
namespace {

constexpr Seconds kForegroundCheckInterval{1};
constexpr std::size_t kLargestPiece = 4096;

/// Files and devices like /dev/null are always ready, and not every system can wait for them.
bool canBeWaitedFor(int descriptor) {
    struct stat status = {};
    return ::isatty(descriptor) || (::fstat(descriptor, &status) == 0 &&
                                    (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode)));
}

bool hasSomething(int descriptor) {
    pollfd question{descriptor, POLLIN, 0};
    return ::poll(&question, 1, 0) > 0;
}

} // namespace

CommandReader::CommandReader(int descriptor, MainQueue& queue,
                             std::function<void(const LineSplitter::Line&)> onLine)
    : m_shared(descriptor), m_own(reopenNonBlocking(descriptor, O_RDONLY)), m_queue(queue),
      m_onLine(std::move(onLine)), m_self(std::make_shared<CommandReader*>(this)) {
    if (canBeWaitedFor(source())) {
        readWhenReady();
    } else {
        readAgainSoon();
    }
}

void CommandReader::readWhenReady() {
    m_notifier = std::make_unique<QSocketNotifier>(source(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [this] { readOnce(); });
}

void CommandReader::readAgainSoon() {
    m_queue.post([weak = std::weak_ptr(m_self)] {
        if (const auto self = weak.lock()) {
            (*self)->readOnce();
        }
    });
}

void CommandReader::readOnce() {
    if (!isInForeground(source())) {
        return waitForForeground();
    }
    const Outcome outcome = hasSomething(source()) ? readPiece() : Outcome::nothingThere;
    if (outcome == Outcome::ended) {
        if (m_notifier) {
            m_notifier->setEnabled(false);
        }
        report(m_splitter.finish());
    } else if (!m_notifier) {
        readAgainSoon();
    }
}

CommandReader::Outcome CommandReader::readPiece() {
    std::array<char, kLargestPiece> buffer;
    const ssize_t count = ::read(source(), buffer.data(), buffer.size());
    if (count > 0) {
        report(m_splitter.feed(QByteArray(buffer.data(), count)));
        return Outcome::read;
    }
    const bool isTransient = count < 0 && (errno == EAGAIN || errno == EINTR);
    // A terminal that was taken away between the look at it and the read refuses with EIO.
    const bool isForeign = count < 0 && errno == EIO && !isInForeground(source());
    return isTransient || isForeign ? Outcome::nothingThere : Outcome::ended;
}

/// The notifier would report the same input of the other job again and again.
void CommandReader::waitForForeground() {
    m_notifier->setEnabled(false);
    m_queue.after(kForegroundCheckInterval, [weak = std::weak_ptr(m_self)] {
        if (const auto self = weak.lock()) {
            (*self)->m_notifier->setEnabled(true);
        }
    });
}

void CommandReader::report(const std::vector<LineSplitter::Line>& lines) {
    for (const LineSplitter::Line& line : lines) {
        m_onLine(line);
    }
}

} // namespace orvanta
