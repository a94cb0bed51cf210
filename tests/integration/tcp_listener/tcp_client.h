// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/file_descriptor.h"

#include <QByteArray>
#include <QByteArrayView>

#include <cstdint>
#include <string>
#include <sys/socket.h>
#include <vector>

namespace orvanta {

/// The addresses at which this machine can be reached, each with its port still 0.
std::vector<sockaddr_storage> addressesOfThisMachine();
std::string describe(const sockaddr_storage& address);

/// A blocking client that gives up after 20 seconds.
class TcpClient {
public:
    /// To 127.0.0.1.
    explicit TcpClient(std::uint16_t port);
    TcpClient(sockaddr_storage address, std::uint16_t port);

    /// 0, or why the connection could not be made.
    int connectError() const { return m_connectError; }

    /// 0, or the error that stopped it.
    int send(const QByteArray& bytes);
    /// Sends `most` bytes; how many of them could be sent before the peer refused more.
    qint64 pour(qint64 most);
    void finishSending();
    /// Closes such that the peer sees a reset.
    void reset();
    void close() { m_socket.reset(); }

    struct Received {
        QByteArray bytes;
        int error = 0; ///< 0 when the peer closed in good order
    };
    Received receiveToEnd();
    Received receive(qsizetype atMost);

private:
    struct Sent {
        qsizetype bytes = 0;
        int error = 0; ///< what stopped it
    };

    void connectTo(const sockaddr_storage& address);
    Sent transmit(QByteArrayView bytes);

    FileDescriptor m_socket;
    int m_connectError = 0;
};

} // namespace orvanta
