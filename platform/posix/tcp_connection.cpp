// SPDX-License-Identifier: MIT
#include "platform/posix/tcp_connection.h"

#include "platform/posix/socket_calls.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

namespace orvanta {
namespace {

constexpr std::chrono::seconds kLongestClosing{1};
constexpr std::size_t kMostDropped = 1024 * 1024;
constexpr std::size_t kDropPiece = 64 * 1024;

} // namespace

void PosixTcpConnection::receive(std::size_t maximum, std::function<void(QByteArray)> onReceived) {
    m_maximum = maximum;
    m_onReceived = std::move(onReceived);
    if (!isOpen() || isClosing()) {
        completeReceive({});
    }
}

void PosixTcpConnection::send(QByteArray bytes, std::function<void()> onProcessed) {
    if (!isOpen() || isClosing()) {
        onProcessed();
        return;
    }
    m_outgoing.push_back({std::move(bytes), 0, std::move(onProcessed)});
    sendNow();
}

void PosixTcpConnection::cancel() {
    if (!isOpen() || isClosing()) {
        return;
    }
    m_closeAt = Clock::now() + kLongestClosing;
    if (m_outgoing.empty()) {
        tellEnd();
    }
    completeReceive({});
}

std::optional<PollSource::Interest> PosixTcpConnection::interest() {
    if (!isOpen()) {
        return std::nullopt;
    }
    Interest interest;
    if (isWaiting() || (isClosing() && m_outgoing.empty())) {
        interest.events |= POLLIN;
    }
    if (!m_outgoing.empty()) {
        interest.events |= POLLOUT;
    }
    // Even without events the system would report, again and again, that the peer has gone.
    interest.descriptor = interest.events != 0 ? m_socket.get() : -1;
    interest.until = m_closeAt.value_or(Clock::time_point::max());
    return interest;
}

void PosixTcpConnection::react(bool isReady) {
    if (isReady) {
        sendNow();
        receiveNow();
        drainNow();
    }
    if (isClosing() && *m_closeAt <= Clock::now()) {
        close();
    }
}

void PosixTcpConnection::abandon() {
    m_socket.reset();
    const auto onReceived = std::exchange(m_onReceived, nullptr);
    const auto outgoing = std::exchange(m_outgoing, {});
}

void PosixTcpConnection::giveWay() {
    receiveNow();
    completeReceive({});
    close();
}

void PosixTcpConnection::receiveNow() {
    if (!isOpen() || !isWaiting()) {
        return;
    }
    QByteArray bytes(static_cast<qsizetype>(m_maximum), Qt::Uninitialized);
    const ssize_t count = ::recv(m_socket.get(), bytes.data(), m_maximum, 0);
    if (count < 0 && isTryAgain(errno)) {
        return;
    }
    bytes.resize(count > 0 ? count : 0);
    completeReceive(bytes);
}

void PosixTcpConnection::completeReceive(const QByteArray& bytes) {
    if (const auto onReceived = std::exchange(m_onReceived, nullptr)) {
        onReceived(bytes);
    }
}

void PosixTcpConnection::sendNow() {
    while (isOpen() && !m_outgoing.empty()) {
        Outgoing& outgoing = m_outgoing.front();
        const auto left = static_cast<std::size_t>(outgoing.bytes.size() - outgoing.sent);
        const ssize_t count = sendBytes(m_socket, outgoing.bytes.constData() + outgoing.sent, left);
        if (count < 0 && isTryAgain(errno)) {
            return;
        }
        if (count < 0) {
            close();
            return;
        }
        outgoing.sent += count;
        if (outgoing.sent == outgoing.bytes.size()) {
            finishFirstOutgoing();
        }
    }
}

void PosixTcpConnection::finishFirstOutgoing() {
    const auto onProcessed = std::move(m_outgoing.front().onProcessed);
    m_outgoing.pop_front();
    if (isClosing() && m_outgoing.empty()) {
        tellEnd();
    }
    onProcessed();
}

void PosixTcpConnection::tellEnd() {
    ::shutdown(m_socket.get(), SHUT_WR);
}

void PosixTcpConnection::drainNow() {
    if (!isOpen() || !isClosing() || !m_outgoing.empty()) {
        return;
    }
    std::array<char, kDropPiece> buffer;
    const ssize_t count = ::recv(m_socket.get(), buffer.data(), buffer.size(), 0);
    if (count < 0 && isTryAgain(errno)) {
        return;
    }
    m_dropped += count > 0 ? static_cast<std::size_t>(count) : 0;
    if (count <= 0 || m_dropped >= kMostDropped) {
        close();
    }
}

void PosixTcpConnection::close() {
    m_socket.reset();
    completeReceive({});
    while (!m_outgoing.empty()) {
        finishFirstOutgoing();
    }
}

} // namespace orvanta
