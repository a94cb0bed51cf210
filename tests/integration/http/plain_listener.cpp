// SPDX-License-Identifier: MIT
#include "integration/http/plain_listener.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orvanta {

PlainListener::PlainListener(int backlog) : m_listener(::socket(AF_INET, SOCK_STREAM, 0)) {
    m_address.sin_family = AF_INET;
    m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(m_listener.get(), address(), sizeof(m_address));
    ::listen(m_listener.get(), backlog);
    socklen_t size = sizeof(m_address);
    ::getsockname(m_listener.get(), address(), &size);
}

QString PlainListener::url() const {
    return QStringLiteral("http://127.0.0.1:%1/").arg(ntohs(m_address.sin_port));
}

bool PlainListener::reply(const QByteArray& bytes) {
    m_peers.emplace_back(::accept(m_listener.get(), nullptr, nullptr));
    return ::write(m_peers.back().get(), bytes.constData(),
                   static_cast<std::size_t>(bytes.size())) == bytes.size();
}

void PlainListener::fillQueue() {
    for (int i = 0; i < 4; ++i) {
        const int filler = ::socket(AF_INET, SOCK_STREAM, 0);
        ::fcntl(filler, F_SETFL, O_NONBLOCK);
        ::connect(filler, address(), sizeof(m_address));
        m_peers.emplace_back(filler);
    }
}

} // namespace orvanta
