// SPDX-License-Identifier: MIT
#include "integration/tcp_listener/tcp_client.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/time.h>

namespace orvanta {
namespace {

#ifdef MSG_NOSIGNAL
constexpr int kSendFlags = MSG_NOSIGNAL;
#else
constexpr int kSendFlags = 0;
#endif

sockaddr_storage loopback() {
    sockaddr_storage storage{};
    auto& address = reinterpret_cast<sockaddr_in&>(storage);
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return storage;
}

void setPort(sockaddr_storage& address, std::uint16_t port) {
    if (address.ss_family == AF_INET6) {
        reinterpret_cast<sockaddr_in6&>(address).sin6_port = htons(port);
    } else {
        reinterpret_cast<sockaddr_in&>(address).sin_port = htons(port);
    }
}

socklen_t sizeOf(sa_family_t family) {
    return family == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
}

} // namespace

std::vector<sockaddr_storage> addressesOfThisMachine() {
    std::vector<sockaddr_storage> addresses;
    ifaddrs* list = nullptr;
    ::getifaddrs(&list);
    for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
        const sockaddr* address = entry->ifa_addr;
        if (address != nullptr && (entry->ifa_flags & IFF_UP) != 0 &&
            (address->sa_family == AF_INET || address->sa_family == AF_INET6)) {
            std::memcpy(&addresses.emplace_back(), address, sizeOf(address->sa_family));
        }
    }
    ::freeifaddrs(list);
    return addresses;
}

std::string describe(const sockaddr_storage& address) {
    char text[INET6_ADDRSTRLEN] = "";
    const void* bytes =
        address.ss_family == AF_INET6
            ? static_cast<const void*>(&reinterpret_cast<const sockaddr_in6&>(address).sin6_addr)
            : &reinterpret_cast<const sockaddr_in&>(address).sin_addr;
    ::inet_ntop(address.ss_family, bytes, text, sizeof text);
    return text;
}

TcpClient::TcpClient(std::uint16_t port) : TcpClient(loopback(), port) {}

TcpClient::TcpClient(sockaddr_storage address, std::uint16_t port) {
    setPort(address, port);
    connectTo(address);
}

void TcpClient::connectTo(const sockaddr_storage& address) {
    m_socket = FileDescriptor(::socket(address.ss_family, SOCK_STREAM, 0));
    const timeval patience{20, 0};
    ::setsockopt(m_socket.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    ::setsockopt(m_socket.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    const bool isConnected = ::connect(m_socket.get(), reinterpret_cast<const sockaddr*>(&address),
                                       sizeOf(address.ss_family)) == 0;
    m_connectError = isConnected ? 0 : errno;
}

TcpClient::Sent TcpClient::transmit(QByteArrayView bytes) {
    Sent sent;
    while (sent.bytes < bytes.size()) {
        const ssize_t count =
            ::send(m_socket.get(), bytes.data() + sent.bytes,
                   static_cast<std::size_t>(bytes.size() - sent.bytes), kSendFlags);
        if (count < 0) {
            sent.error = errno;
            break;
        }
        sent.bytes += count;
    }
    return sent;
}

int TcpClient::send(const QByteArray& bytes) {
    return transmit(bytes).error;
}

qint64 TcpClient::pour(qint64 most) {
    constexpr qint64 kPiece = 64 * 1024;
    const QByteArray piece(kPiece, 'x');
    Sent last;
    qint64 sent = 0;
    while (sent < most && last.error == 0) {
        last = transmit(QByteArrayView(piece).first(std::min(kPiece, most - sent)));
        sent += last.bytes;
    }
    return sent;
}

void TcpClient::finishSending() {
    ::shutdown(m_socket.get(), SHUT_WR);
}

void TcpClient::reset() {
    const linger atOnce{1, 0};
    ::setsockopt(m_socket.get(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    m_socket.reset();
}

TcpClient::Received TcpClient::receiveToEnd() {
    Received received;
    while (true) {
        const Received piece = receive(64 * 1024);
        received.bytes += piece.bytes;
        received.error = piece.error;
        if (piece.bytes.isEmpty()) {
            return received;
        }
    }
}

TcpClient::Received TcpClient::receive(qsizetype atMost) {
    QByteArray bytes(atMost, '\0');
    const ssize_t count = ::recv(m_socket.get(), bytes.data(), static_cast<std::size_t>(atMost), 0);
    if (count < 0) {
        return {{}, errno};
    }
    return {bytes.left(count), 0};
}

} // namespace orvanta
