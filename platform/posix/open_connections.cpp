// SPDX-License-Identifier: MIT
#include "platform/posix/open_connections.h"

#include <algorithm>

namespace orvanta {
namespace {

using Connection = std::weak_ptr<PosixTcpConnection>;

bool isGone(const Connection& connection) {
    const auto held = connection.lock();
    return held == nullptr || !held->isOpen();
}

/// Lower ones give way first.
int importance(const Connection& connection) {
    const auto held = connection.lock();
    if (held->isClosing()) {
        return 0;
    }
    return held->isWaiting() ? 1 : 2;
}

} // namespace

void OpenConnections::admit(const std::shared_ptr<PosixTcpConnection>& connection) {
    std::erase_if(m_connections, isGone);
    if (m_connections.size() >= kMost) {
        makeRoom();
    }
    m_connections.push_back(connection);
}

void OpenConnections::makeRoom() {
    const auto first = std::min_element(
        m_connections.begin(), m_connections.end(),
        [](const auto& a, const auto& b) { return importance(a) < importance(b); });
    const auto connection = first->lock();
    m_connections.erase(first);
    connection->giveWay();
}

} // namespace orvanta
