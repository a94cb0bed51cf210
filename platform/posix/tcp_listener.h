// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/open_connections.h"
#include "platform/posix/poll_loop.h"
#include "platform/tcp_listener.h"

#include <memory>
#include <mutex>

namespace orvanta {

/// A listening socket on a `PollLoop`, which holds it until it is cancelled.
class PosixTcpListener : public TcpListener, public PollSource {
public:
    /// `socket` listens already. `onConnection` is called on the loop's thread.
    PosixTcpListener(FileDescriptor socket, std::weak_ptr<PollLoop> loop,
                     std::shared_ptr<OpenConnections> connections,
                     NewConnectionHandler onConnection);

    std::optional<std::uint16_t> port() const override;

    /// Does not wait for the loop, however busy that is.
    void cancel() override;

    std::optional<Interest> interest() override;
    void react(bool isReady) override;
    void abandon() override { closeSocket(); }

private:
    FileDescriptor acceptOne();
    void closeSocket();

    const std::uint16_t m_port;
    const std::weak_ptr<PollLoop> m_loop;
    const std::shared_ptr<OpenConnections> m_connections;
    const NewConnectionHandler m_onConnection;
    Clock::time_point m_pausedUntil; ///< the loop's thread only

    mutable std::mutex m_mutex; ///< guards the socket, which the main thread may close
    FileDescriptor m_socket;
};

} // namespace orvanta
