// SPDX-License-Identifier: MIT
// Preloaded into a tray that valgrind runs, whose kernel has no descriptors of processes: makes one
// that becomes readable when the process exits, as the system's does.
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using SystemCall = long (*)(long, ...);

/// Closes the other end of the pipe when the process has exited, and leaves that to be collected.
void holdUntilExit(pid_t process, int end) {
    siginfo_t info;
    while (::waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOWAIT) != 0 &&
           errno == EINTR) {
    }
    ::close(end);
}

long openProcess(pid_t process) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return -1;
    }
    std::thread(holdUntilExit, process, ends[1]).detach();
    return ends[0];
}

} // namespace

// As unistd.h declares it.
extern "C" __attribute__((visibility("default"))) long syscall(long number, ...) noexcept {
    static const auto next = reinterpret_cast<SystemCall>(::dlsym(RTLD_NEXT, "syscall"));
    constexpr int kMost = 6;
    long values[kMost];
    va_list arguments;
    va_start(arguments, number);
    for (long& value : values) {
        value = va_arg(arguments, long);
    }
    va_end(arguments);
    if (number == SYS_pidfd_open) {
        return openProcess(static_cast<pid_t>(values[0]));
    }
    return next(number, values[0], values[1], values[2], values[3], values[4], values[5]);
}
