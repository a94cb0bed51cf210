// SPDX-License-Identifier: MIT
// stamp: notes in BENCH_LOG when pieces arrive on standard input: "printed 0 NS PIECE", with
// control characters as spaces.

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <unistd.h>

int main() {
    std::FILE* log = std::fopen(std::getenv("BENCH_LOG"), "ae");
    if (log == nullptr) {
        std::perror("stamp");
        return 1;
    }
    char piece[16384];
    ssize_t count = 0;
    while ((count = ::read(STDIN_FILENO, piece, sizeof piece)) > 0) {
        timespec time{};
        ::clock_gettime(CLOCK_MONOTONIC, &time);
        for (ssize_t i = 0; i < count; ++i) {
            piece[i] = std::iscntrl(static_cast<unsigned char>(piece[i])) != 0 ? ' ' : piece[i];
        }
        std::fprintf(log, "printed 0 %lld %.*s\n",
                     static_cast<long long>(time.tv_sec) * 1'000'000'000 + time.tv_nsec,
                     static_cast<int>(count), piece);
        std::fflush(log);
    }
    return 0;
}
