// SPDX-License-Identifier: MIT
// get PORT COUNT: one status request after the other. Prints the nanoseconds of each, from opening
// the socket to the end of the reply.

#include "bench/harness/status_request.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: get PORT COUNT\n", stderr);
        return 2;
    }
    for (int i = 0; i < std::atoi(argv[2]); ++i) {
        const std::int64_t before = monotonicNow();
        const auto replied = requestStatus(std::atoi(argv[1]));
        if (!replied) {
            std::perror("get");
            return 1;
        }
        std::printf("%lld\n", static_cast<long long>(*replied - before));
    }
    return 0;
}
