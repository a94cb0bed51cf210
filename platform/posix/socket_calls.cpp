// SPDX-License-Identifier: MIT
#include "platform/posix/socket_calls.h"

#include "platform/posix/posix_error.h"

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <sys/socket.h>

#ifdef __APPLE__
#include <fcntl.h>
#endif

namespace orvanta {
namespace {

#ifdef __APPLE__

constexpr int kSendFlags = 0;

FileDescriptor prepared(FileDescriptor socket) {
    const int on = 1;
    if (socket.isOpen() && (::fcntl(socket.get(), F_SETFD, FD_CLOEXEC) != 0 ||
                            ::fcntl(socket.get(), F_SETFL, O_NONBLOCK) != 0 ||
                            ::setsockopt(socket.get(), SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on))) {
        return {};
    }
    return socket;
}

FileDescriptor openSocket(int family) {
    return prepared(FileDescriptor(::socket(family, SOCK_STREAM, 0)));
}

#else

constexpr int kSendFlags = MSG_NOSIGNAL;

FileDescriptor openSocket(int family) {
    return FileDescriptor(::socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

#endif

template <typename Address>
bool bindAndListen(const FileDescriptor& socket, const Address& address) {
    return ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
           ::listen(socket.get(), SOMAXCONN) == 0;
}

/// Not open, and errno set, on failure.
FileDescriptor listenOnBothFamilies() {
    FileDescriptor socket = openSocket(AF_INET6);
    const int off = 0;
    sockaddr_in6 any{};
    any.sin6_family = AF_INET6;
    if (!socket.isOpen() ||
        ::setsockopt(socket.get(), IPPROTO_IPV6, IPV6_V6ONLY, &off, sizeof off) != 0 ||
        !bindAndListen(socket, any)) {
        return {};
    }
    return socket;
}

/// Not open, and errno set, on failure.
FileDescriptor listenOnIpv4(in_addr_t host) {
    FileDescriptor socket = openSocket(AF_INET);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(host);
    if (!socket.isOpen() || !bindAndListen(socket, address)) {
        return {};
    }
    return socket;
}

} // namespace

FileDescriptor openListeningSocket(Reach reach) {
    const bool isLocal = reach == Reach::loopback;
    FileDescriptor socket = isLocal ? FileDescriptor() : listenOnBothFamilies();
    if (!socket.isOpen()) {
        socket = listenOnIpv4(isLocal ? INADDR_LOOPBACK : INADDR_ANY);
    }
    if (!socket.isOpen()) {
        throw posixError(errno, QStringLiteral("No port could be opened for listening"));
    }
    return socket;
}

std::uint16_t localPort(const FileDescriptor& socket) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    ::getsockname(socket.get(), reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.ss_family == AF_INET6
                     ? reinterpret_cast<const sockaddr_in6&>(address).sin6_port
                     : reinterpret_cast<const sockaddr_in&>(address).sin_port);
}

FileDescriptor acceptConnection(const FileDescriptor& listener) {
#ifdef __APPLE__
    return prepared(FileDescriptor(::accept(listener.get(), nullptr, nullptr)));
#else
    return FileDescriptor(
        ::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
#endif
}

std::optional<std::uint32_t> loopbackAddress(const char* text) {
    in_addr address{};
    const bool isWritten = ::inet_pton(AF_INET, text, &address) == 1;
    const std::uint32_t host = ntohl(address.s_addr);
    const bool isHere = isWritten && host >> 24U == IN_LOOPBACKNET;
    return isHere ? std::optional(host) : std::nullopt;
}

FileDescriptor beginConnection(std::uint32_t host, std::uint16_t port) {
    FileDescriptor socket = openSocket(AF_INET);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(host);
    address.sin_port = htons(port);
    const bool hasBegun =
        socket.isOpen() && (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address),
                                      sizeof address) == 0 ||
                            errno == EINPROGRESS);
    return hasBegun ? std::move(socket) : FileDescriptor();
}

ssize_t sendBytes(const FileDescriptor& socket, const char* bytes, std::size_t count) {
    return ::send(socket.get(), bytes, count, kSendFlags);
}

bool isTryAgain(int code) {
    return code == EAGAIN || code == EWOULDBLOCK || code == EINTR;
}

} // namespace orvanta
