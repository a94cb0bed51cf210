// SPDX-License-Identifier: MIT
// first_get CONNECTOR: starts CONNECTOR, waits for its announcement, asks it for its status and
// notes "replied PID NS" in BENCH_LOG when the reply is there. The least that somebody who learns
// the port from the connector's output can do. Ends the connector.

#include "bench/bare/monotonic_log.h"
#include "bench/harness/status_request.h"

#include <csignal>
#include <cstring>
#include <sys/wait.h>

namespace {

/// The connector's standard output, with the number of its process in `pid`.
int start(char* connector, pid_t& pid) {
    int ends[2];
    if (::pipe(ends) != 0) {
        std::perror("pipe");
        std::exit(1);
    }
    pid = ::fork();
    if (pid == 0) {
        ::dup2(ends[1], STDOUT_FILENO);
        ::setenv("PORT", "0", 1);
        char* arguments[] = {connector, nullptr};
        ::execv(connector, arguments);
        ::_exit(127);
    }
    ::close(ends[1]);
    return ends[0];
}

/// 0 when nothing was announced.
int announcedPort(int output) {
    char line[256];
    const ssize_t count = ::read(output, line, sizeof line - 1);
    line[count > 0 ? count : 0] = '\0';
    const char* colon = std::strrchr(line, ':');
    return colon == nullptr ? 0 : std::atoi(colon + 1);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        return 2;
    }
    pid_t pid = 0;
    const int output = start(argv[1], pid);
    const auto replied = requestStatus(announcedPort(output));
    logAt("replied", replied.value_or(0));
    ::kill(pid, SIGKILL);
    ::waitpid(pid, nullptr, 0);
    return replied ? 0 : 1;
}
