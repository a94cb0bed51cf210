#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# run.sh RESULTS_FILE: what programs at rest keep in memory.
#
#   BENCH_MEMORY_SECONDS  how long each of them has been running by then; default: 20
set -euo pipefail
exec bench/harness/world.sh --desktop node bench/memory/memory.js "$1"
