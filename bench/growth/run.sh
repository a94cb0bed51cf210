#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# run.sh RESULTS_FILE: what the tray costs after very many polls, beside the first ones.
#
#   BENCH_POLLS  how many; default: 100000
set -euo pipefail
exec bench/harness/world.sh node bench/growth/growth.js "$1"
