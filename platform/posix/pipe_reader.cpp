// SPDX-License-Identifier: MIT
#include "platform/posix/pipe_reader.h"

#include <array>
#include <cerrno>
#include <optional>

namespace orvanta {
namespace {

constexpr std::size_t kLargestPiece = 64 * 1024;

/// Nothing when the pipe had nothing after all; empty at the end of file. A pipe that cannot be
/// read any more has ended.
std::optional<QByteArray> readPiece(int descriptor) {
    std::array<char, kLargestPiece> buffer;
    const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
        return std::nullopt;
    }
    return count > 0 ? QByteArray(buffer.data(), count) : QByteArray();
}

} // namespace

PipeReader::PipeReader(FileDescriptor readEnd, std::function<void(QByteArray)> onPiece,
                       std::function<void()> onEnd)
    : m_readEnd(std::move(readEnd)), m_onPiece(std::move(onPiece)), m_onEnd(std::move(onEnd)),
      m_notifier(m_readEnd.get(), QSocketNotifier::Read) {
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { readOnce(); });
}

void PipeReader::close() {
    m_notifier.setEnabled(false);
    m_readEnd.reset();
}

void PipeReader::readOnce() {
    const std::optional<QByteArray> piece = readPiece(m_readEnd.get());
    if (!piece) {
        return;
    }
    if (piece->isEmpty()) {
        close();
        m_onEnd();
    } else {
        m_onPiece(*piece);
    }
}

} // namespace orvanta
