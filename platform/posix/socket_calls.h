// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/file_descriptor.h"
#include "platform/tcp_listener.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <sys/types.h>

namespace orvanta {

/// Socket calls whose descriptors never block, close on exec and never raise SIGPIPE.

/// Listens on a port that the system picks; every interface means IPv6 and IPv4 alike (IPv4 alone
/// where the system has no IPv6). Throws `PlatformError`.
FileDescriptor openListeningSocket(Reach reach);

std::uint16_t localPort(const FileDescriptor& socket);

/// The next waiting connection; not open, and errno set, when there is none or none can be had.
FileDescriptor acceptConnection(const FileDescriptor& listener);

/// The IPv4 address that `text` writes by number, in the order of the host; nothing when it is none
/// of 127.0.0.0/8.
std::optional<std::uint32_t> loopbackAddress(const char* text);

/// A socket that is being connected; not open, and errno set, when that is known to be in vain.
FileDescriptor beginConnection(std::uint32_t host, std::uint16_t port);

/// As send(2).
ssize_t sendBytes(const FileDescriptor& socket, const char* bytes, std::size_t count);

/// errno says that the call would succeed at another time.
bool isTryAgain(int code);

} // namespace orvanta
