// SPDX-License-Identifier: MIT
// The smallest connector: says when it was executed, opens a port, announces it, and answers every
// request with the status document of a connector that is online. Linked statically and free of
// libraries, so that what is measured is who started it.
//
// BENCH_LOG   file to which "executed PID NS", "running PID NS", "announced PID NS PORT" and, for
//             each request, "asked PID NS" are appended, with the nanoseconds of CLOCK_MONOTONIC.
//             Executed is the first instruction of the process, running is its `main`. Between
//             them the C library asks the processor what it can: some 40 questions, for each of
//             which a virtual machine stops, for 5 microseconds where this was written
// PORT        port to listen on; without it the program only says that it was executed, and stays
//
// It opens its port 20 ms after its `main` began: sooner than any connector does, and late enough
// for whoever has started it to have finished with that.

#include "bench/bare/monotonic_log.h"
#include "bench/harness/first_instruction.h"

#include <arpa/inet.h>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr char kReply[] = "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n"
                          "Content-Length: 40\r\nConnection: close\r\n\r\n"
                          "{\"state\":\"RUNNING\",\"mode\":\"development\"}";

/// One write per line, so that lines of several processes do not mix.
void log(const char* event, std::int64_t time, int port) {
    const char* path = std::getenv("BENCH_LOG");
    const int file =
        path == nullptr ? -1 : ::open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (file < 0) {
        return;
    }
    char line[128];
    const int length = std::snprintf(line, sizeof line, "%s %d %lld %d\n", event, ::getpid(),
                                     static_cast<long long>(time), port);
    [[maybe_unused]] const auto written = ::write(file, line, static_cast<std::size_t>(length));
    ::close(file);
}

int listenOn(int port) {
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int yes = 1;
    ::setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);
    if (::bind(listener, generic, sizeof address) != 0 || ::listen(listener, 64) != 0) {
        std::perror("listen");
        std::exit(1);
    }
    return listener;
}

int portOf(int listener) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

void announce(int port) {
    char line[80];
    const int length = std::snprintf(line, sizeof line,
                                     "Desktop Connector running on http://127.0.0.1:%d\n", port);
    const std::int64_t time = monotonicNow();
    [[maybe_unused]] const auto written =
        ::write(STDOUT_FILENO, line, static_cast<std::size_t>(length));
    log("announced", time, port);
}

void answer(int connection) {
    char request[4096];
    std::size_t length = 0;
    while (length < sizeof request - 1) {
        const ssize_t count = ::read(connection, request + length, sizeof request - 1 - length);
        if (count <= 0) {
            return;
        }
        length += static_cast<std::size_t>(count);
        request[length] = '\0';
        if (std::strstr(request, "\r\n\r\n") != nullptr) {
            break;
        }
    }
    [[maybe_unused]] const auto written = ::write(connection, kReply, sizeof kReply - 1);
}

} // namespace

int main() {
    const std::int64_t running = monotonicNow();
    log("executed", nanosecondsOf(orvanta_bench_executed), 0);
    log("running", running, 0);
    const char* port = std::getenv("PORT");
    if (port == nullptr) {
        while (true) {
            ::pause();
        }
    }
    const timespec preparation{0, 20'000'000};
    ::nanosleep(&preparation, nullptr);
    const int listener = listenOn(std::atoi(port));
    announce(portOf(listener));
    while (true) {
        const int connection = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0) {
            continue;
        }
        const std::int64_t asked = monotonicNow();
        answer(connection);
        ::close(connection);
        log("asked", asked, 0);
    }
}
