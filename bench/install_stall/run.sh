#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# run.sh RESULTS_FILE: how long a click waits while a runtime is seeded, installed and pruned.
set -euo pipefail

exec bench/harness/trees.sh node bench/install_stall/stalls.js "$1"
