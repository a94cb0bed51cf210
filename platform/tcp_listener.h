// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace orvanta {

/// One accepted connection. All its calls and callbacks belong to the serial queue it came on.
class TcpConnection {
public:
    virtual ~TcpConnection() = default;

    /// One receive: `onReceived` gets the first bytes that arrive, `maximum` at most, or nothing
    /// when the peer closed or the connection failed. Called exactly once, unless the queue ends
    /// first. The connection stays alive until then, whoever else holds it.
    virtual void receive(std::size_t maximum, std::function<void(QByteArray)> onReceived) = 0;

    /// Sends `bytes` and calls `onProcessed` when they have been handed to the system or could not
    /// be. The connection stays alive until then.
    virtual void send(QByteArray bytes, std::function<void()> onProcessed) = 0;

    /// Closes the connection so that what was sent still arrives.
    virtual void cancel() = 0;
};

using NewConnectionHandler = std::function<void(std::shared_ptr<TcpConnection>)>;

/// A listening socket. Dropping it leaves it listening; `cancel` ends it, or the end of its queue.
class TcpListener {
public:
    virtual ~TcpListener() = default;

    /// The port the system assigned; nothing before the listener is ready and after `cancel`.
    virtual std::optional<std::uint16_t> port() const = 0;

    /// New connections are refused from the return of this call on. Connections already accepted
    /// are left alone. Main thread only.
    virtual void cancel() = 0;
};

/// From where a listener can be reached: from every network of the machine, or only from the
/// machine itself, at 127.0.0.1.
enum class Reach { everyInterface, loopback };

/// A thread of its own that does one thing at a time. Ends with its last reference; what is still
/// waiting on it is dropped then.
class SerialQueue {
public:
    virtual ~SerialQueue() = default;

    /// Listens on a port that the system picks. `onConnection` runs on this queue. Throws
    /// `PlatformError` when the listener cannot be made. Main thread only.
    virtual std::shared_ptr<TcpListener> listen(Reach reach, NewConnectionHandler onConnection) = 0;
};

/// Makes serial queues.
class SerialQueueFactory {
public:
    virtual ~SerialQueueFactory() = default;

    /// `label` names the thread for debuggers. No thread runs before the first `listen`.
    virtual std::shared_ptr<SerialQueue> makeSerialQueue(const QString& label) = 0;
};

} // namespace orvanta
