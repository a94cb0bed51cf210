// SPDX-License-Identifier: MIT
// For processors that first_instruction.S has no instructions for: the time at which the C library
// is ready.

#include "bench/harness/first_instruction.h"

extern "C" timespec orvanta_bench_executed{};

namespace {

[[gnu::constructor]] void noteTime() {
    ::clock_gettime(CLOCK_MONOTONIC, &orvanta_bench_executed);
}

} // namespace
