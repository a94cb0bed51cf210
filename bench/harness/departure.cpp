// SPDX-License-Identifier: MIT
// Preloaded into a tray, and so into what it starts: notes "departed PID NS" in BENCH_LOG whenever
// it hands the system a message that says that its icon is a new one. What comes after that is the
// bus's and the panel's.

#include "bench/bare/monotonic_log.h"

#include <cerrno>
#include <dlfcn.h>
#include <string_view>
#include <sys/socket.h>

namespace {

using SendMessage = ssize_t (*)(int, const msghdr*, int);

constexpr std::string_view kNews = "NewIcon";

bool tellsOfNewIcon(const msghdr& message) {
    for (std::size_t i = 0; i < message.msg_iovlen; ++i) {
        const iovec& part = message.msg_iov[i];
        const std::string_view bytes(static_cast<const char*>(part.iov_base), part.iov_len);
        if (bytes.find(kNews) != std::string_view::npos) {
            return true;
        }
    }
    return false;
}

} // namespace

extern "C" __attribute__((visibility("default"))) ssize_t sendmsg(int socket, const msghdr* message,
                                                                  int flags) {
    static const auto send = reinterpret_cast<SendMessage>(::dlsym(RTLD_NEXT, "sendmsg"));
    if (!tellsOfNewIcon(*message)) {
        return send(socket, message, flags);
    }
    const std::int64_t time = monotonicNow();
    const ssize_t sent = send(socket, message, flags);
    const int error = errno;
    logAt("departed", time);
    errno = error;
    return sent;
}
