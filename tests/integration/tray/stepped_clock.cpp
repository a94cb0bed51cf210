// SPDX-License-Identifier: MIT
// Loaded before the C library, this lets a process see another time of day: the file named by
// ORVANTA_CLOCK_OFFSET holds the difference in seconds. Clocks that cannot be set are left alone.
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

long offset() {
    const char* path = std::getenv("ORVANTA_CLOCK_OFFSET");
    const int file = path == nullptr ? -1 : ::open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return 0;
    }
    char text[32] = {};
    const ssize_t size = ::read(file, text, sizeof text - 1);
    ::close(file);
    return size > 0 ? std::atol(text) : 0;
}

} // namespace

#pragma GCC visibility push(default)
extern "C" {

int clock_gettime(clockid_t clock, struct timespec* time) noexcept {
    const auto result = static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
    if (result == 0 && (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE)) {
        time->tv_sec += offset();
    }
    return result;
}

int gettimeofday(struct timeval* time, void*) noexcept {
    struct timespec now {};
    const int result = clock_gettime(CLOCK_REALTIME, &now);
    time->tv_sec = now.tv_sec;
    time->tv_usec = now.tv_nsec / 1000;
    return result;
}

time_t time(time_t* copy) noexcept {
    struct timespec now {};
    clock_gettime(CLOCK_REALTIME, &now);
    if (copy != nullptr) {
        *copy = now.tv_sec;
    }
    return now.tv_sec;
}

} // extern "C"
#pragma GCC visibility pop
