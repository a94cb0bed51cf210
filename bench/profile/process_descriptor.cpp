// SPDX-License-Identifier: MIT
// Preloaded into a tray that valgrind runs. valgrind does not know the call that opens the
// descriptor of a process, so this makes one that becomes readable when the process exits; for
// children only.
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
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
    try {
        std::thread(holdUntilExit, process, ends[1]).detach();
    } catch (const std::system_error& error) {
        ::close(ends[0]);
        ::close(ends[1]);
        errno = error.code().value();
        return -1;
    }
    return ends[0];
}

/// The C library's. Not a local constant, whose guard may itself make a call.
SystemCall systemCall() {
    static constinit std::atomic<SystemCall> found = nullptr;
    if (found == nullptr) {
        found = reinterpret_cast<SystemCall>(::dlsym(RTLD_NEXT, "syscall"));
    }
    return found;
}

} // namespace

// As unistd.h declares it.
extern "C" __attribute__((visibility("default"))) long syscall(long number, ...) noexcept {
    // As many as any call has. Those that the caller did not give are not looked at.
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
    return systemCall()(number, values[0], values[1], values[2], values[3], values[4], values[5]);
}
