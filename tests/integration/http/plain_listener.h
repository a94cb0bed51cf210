// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/file_descriptor.h"

#include <QByteArray>
#include <QString>

#include <netinet/in.h>
#include <vector>

namespace orvanta {

/// A listening socket on 127.0.0.1 for which no event loop turns.
class PlainListener {
public:
    /// `backlog` as listen takes it.
    explicit PlainListener(int backlog);

    QString url() const;

    /// To whoever has connected; waits for that.
    bool reply(const QByteArray& bytes);

    /// So that further connections are neither made nor refused.
    void fillQueue();

private:
    sockaddr* address() { return reinterpret_cast<sockaddr*>(&m_address); }

    FileDescriptor m_listener;
    std::vector<FileDescriptor> m_peers;
    sockaddr_in m_address{};
};

} // namespace orvanta
