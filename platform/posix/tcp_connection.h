// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/poll_loop.h"
#include "platform/tcp_listener.h"

#include <deque>

namespace orvanta {

/// A connection on a `PollLoop`, whose thread makes every call.
///
/// Open -> `cancel`: what was sent goes out, the peer is told that no more comes, and what it
/// still says is dropped -> closed, when the peer has closed, or after a second, or after 1 MiB.
/// To close at once instead would, with input unread, make the system send a reset, which can
/// overtake the reply and destroy it.
class PosixTcpConnection : public TcpConnection, public PollSource {
public:
    explicit PosixTcpConnection(FileDescriptor socket) : m_socket(std::move(socket)) {}

    void receive(std::size_t maximum, std::function<void(QByteArray)> onReceived) override;
    void send(QByteArray bytes, std::function<void()> onProcessed) override;
    void cancel() override;

    std::optional<Interest> interest() override;
    void react(bool isReady) override;
    void abandon() override;

    bool isOpen() const { return m_socket.isOpen(); }
    bool isWaiting() const { return m_onReceived != nullptr; }
    bool isClosing() const { return m_closeAt.has_value(); }

    /// Ends now to make room: a pending receive completes, with what has just arrived or with
    /// nothing, and its handler may still reply, as far as the system takes the reply at once.
    void giveWay();

private:
    struct Outgoing {
        QByteArray bytes;
        qsizetype sent = 0;
        std::function<void()> onProcessed;
    };

    void receiveNow();
    void completeReceive(const QByteArray& bytes);
    void sendNow();
    void finishFirstOutgoing();
    void tellEnd();
    void drainNow();
    void close();

    FileDescriptor m_socket;
    std::size_t m_maximum = 0;
    std::function<void(QByteArray)> m_onReceived;
    std::deque<Outgoing> m_outgoing;
    std::optional<Clock::time_point> m_closeAt; ///< set by `cancel`
    std::size_t m_dropped = 0;
};

} // namespace orvanta
