// SPDX-License-Identifier: MIT
#pragma once

#include "platform/platform.h"
#include "platform/tcp_listener.h"

#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

namespace orvanta {

/// A minimal HTTP endpoint through which the connector asks to be restarted.
///
/// Main thread, but for its connections, which live on a serial queue of their own. To be held by
/// a `shared_ptr`: connections hold the server weakly, and never long enough to be the last, so
/// that the handler is called and destroyed on the main thread.
///
/// Not started -> `start` -> listening (`restartURL` has a value once the port is known) ->
/// `stop` -> not listening. While the server lives, only `stop` closes the
/// listener.
class HostControlServer : public std::enable_shared_from_this<HostControlServer> {
public:
    /// Makes the serial queue; listens to nothing yet.
    explicit HostControlServer(Platform& platform);

    /// Listens on a system-assigned port of every interface, or of 127.0.0.1 alone when the
    /// environment says ORVANTA_HOST_CONTROL_LOOPBACK_ONLY=1. `onRestart` runs on the main queue,
    /// once for each accepted request. A second call listens on a second port and leaves the first
    /// listener alone. Throws `PlatformError` when the listener cannot be made; then only the
    /// handler has changed.
    void start(std::function<void()> onRestart);

    /// "http://127.0.0.1:PORT/restart"; nothing while there is no listener with a port.
    std::optional<QUrl> restartURL() const;

    /// New connections are refused from now on; open ones are still answered. The handler is kept.
    void stop();

private:
    MainQueue& m_mainQueue;
    const Reach m_reach;
    std::shared_ptr<SerialQueue> m_queue;
    std::shared_ptr<TcpListener> m_listener;
    std::function<void()> m_onRestart;
};

} // namespace orvanta
