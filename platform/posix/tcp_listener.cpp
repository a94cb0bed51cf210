// SPDX-License-Identifier: MIT
#include "platform/posix/tcp_listener.h"

#include "platform/posix/socket_calls.h"

#include <cerrno>
#include <poll.h>
#include <sys/socket.h>

namespace orvanta {
namespace {

/// How long not to ask again after the system could not give a descriptor: the waiting connection
/// would be announced without end.
constexpr std::chrono::milliseconds kPause{100};

} // namespace

PosixTcpListener::PosixTcpListener(FileDescriptor socket, std::weak_ptr<PollLoop> loop,
                                   std::shared_ptr<OpenConnections> connections,
                                   NewConnectionHandler onConnection)
    : m_port(localPort(socket)), m_loop(std::move(loop)), m_connections(std::move(connections)),
      m_onConnection(std::move(onConnection)), m_socket(std::move(socket)) {}

std::optional<std::uint16_t> PosixTcpListener::port() const {
    const std::lock_guard lock(m_mutex);
    return m_socket.isOpen() ? std::optional(m_port) : std::nullopt;
}

void PosixTcpListener::cancel() {
    closeSocket();
    if (const auto loop = m_loop.lock()) {
        loop->wake();
    }
}

void PosixTcpListener::closeSocket() {
    const std::lock_guard lock(m_mutex);
    // A poll under way on another thread keeps the socket alive beyond its close; after this it
    // takes no connection any more. (Where the system knows no shutdown of listeners, its close
    // does not wait for polls.)
    ::shutdown(m_socket.get(), SHUT_RDWR);
    m_socket.reset();
}

std::optional<PollSource::Interest> PosixTcpListener::interest() {
    const std::lock_guard lock(m_mutex);
    if (!m_socket.isOpen()) {
        return std::nullopt;
    }
    if (m_pausedUntil > Clock::now()) {
        return Interest{-1, 0, m_pausedUntil};
    }
    return Interest{m_socket.get(), POLLIN, Clock::time_point::max()};
}

void PosixTcpListener::react(bool isReady) {
    FileDescriptor socket = isReady ? acceptOne() : FileDescriptor();
    const auto loop = m_loop.lock();
    if (!socket.isOpen() || loop == nullptr) {
        return;
    }
    const auto connection = std::make_shared<PosixTcpConnection>(std::move(socket));
    m_connections->admit(connection);
    loop->add(connection);
    m_onConnection(connection);
}

FileDescriptor PosixTcpListener::acceptOne() {
    const std::lock_guard lock(m_mutex);
    if (!m_socket.isOpen()) {
        return {};
    }
    FileDescriptor socket = acceptConnection(m_socket);
    if (!socket.isOpen() && !isTryAgain(errno) && errno != ECONNABORTED) {
        m_pausedUntil = Clock::now() + kPause;
    }
    return socket;
}

} // namespace orvanta
