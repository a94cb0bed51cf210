// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <unistd.h>

inline std::int64_t nanosecondsOf(const timespec& time) {
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

/// Nanoseconds of CLOCK_MONOTONIC.
inline std::int64_t monotonicNow() {
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return nanosecondsOf(time);
}

/// Appends "EVENT PID TIME" to the file that BENCH_LOG names.
inline void logAt(const char* event, std::int64_t time) {
    const char* path = std::getenv("BENCH_LOG");
    std::FILE* file = path == nullptr ? nullptr : std::fopen(path, "ae");
    if (file != nullptr) {
        std::fprintf(file, "%s %d %lld\n", event, ::getpid(), static_cast<long long>(time));
        std::fclose(file);
    }
}

inline void logNow(const char* event) {
    logAt(event, monotonicNow());
}
