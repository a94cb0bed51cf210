// SPDX-License-Identifier: MIT
// launch PROGRAM [ARGUMENT...]: notes "launched PID NS" in BENCH_LOG and becomes PROGRAM, so that
// the time that the measuring program takes to start another one is not counted.

#include "bench/bare/monotonic_log.h"

int main(int argc, char** argv) {
    if (argc < 2) {
        return 2;
    }
    logNow("launched");
    ::execvp(argv[1], argv + 1);
    std::perror(argv[1]);
    return 127;
}
