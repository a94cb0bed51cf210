// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <unistd.h>

/// Appends "EVENT PID NS" to the file that BENCH_LOG names, with the nanoseconds of
/// CLOCK_MONOTONIC.
inline void logNow(const char* event) {
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    const char* path = std::getenv("BENCH_LOG");
    std::FILE* file = path == nullptr ? nullptr : std::fopen(path, "ae");
    if (file != nullptr) {
        std::fprintf(file, "%s %d %lld\n", event, ::getpid(),
                     static_cast<long long>(time.tv_sec) * 1'000'000'000 + time.tv_nsec);
        std::fclose(file);
    }
}
