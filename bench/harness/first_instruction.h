// SPDX-License-Identifier: MIT
#pragma once

#include <ctime>

/// CLOCK_MONOTONIC at the first instruction of the process, before its C library prepares itself.
/// Of a program that is linked statically and begins at `orvanta_bench_entry`.
extern "C" timespec orvanta_bench_executed;
