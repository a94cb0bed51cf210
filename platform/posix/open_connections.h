// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/tcp_connection.h"

#include <memory>
#include <vector>

namespace orvanta {

/// Bounds the connections of a serial queue, so that peers who connect and say nothing cannot use
/// up the descriptors of the process. The queue's thread only.
class OpenConnections {
public:
    static constexpr std::size_t kMost = 64;

    /// Counts `connection`. When that is one too many, another gives way: one that is closing
    /// anyhow, or else the one that has waited longest, or else the oldest.
    void admit(const std::shared_ptr<PosixTcpConnection>& connection);

private:
    void makeRoom();

    std::vector<std::weak_ptr<PosixTcpConnection>> m_connections; ///< oldest first
};

} // namespace orvanta
