// SPDX-License-Identifier: MIT
#pragma once

#include "bench/bare/monotonic_log.h"

#include <arpa/inet.h>
#include <cstdint>
#include <netinet/in.h>
#include <optional>
#include <sys/socket.h>
#include <unistd.h>

/// One status request over a new connection to the connector at `port`, with nothing but system
/// calls. When its last byte was there, in nanoseconds of CLOCK_MONOTONIC; nothing without a reply.
inline std::optional<std::int64_t> requestStatus(int port) {
    constexpr char kRequest[] = "GET /api/ov/status HTTP/1.1\r\nHost: 127.0.0.1\r\n"
                                "Connection: close\r\n\r\n";
    sockaddr_in server{};
    server.sin_family = AF_INET;
    server.sin_port = htons(static_cast<std::uint16_t>(port));
    server.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const auto* address = reinterpret_cast<const sockaddr*>(&server);
    const int connection = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::optional<std::int64_t> replied;
    if (::connect(connection, address, sizeof server) == 0 &&
        ::write(connection, kRequest, sizeof kRequest - 1) > 0) {
        char reply[4096];
        while (::read(connection, reply, sizeof reply) > 0) {
            replied = monotonicNow();
        }
    }
    ::close(connection);
    return replied;
}
