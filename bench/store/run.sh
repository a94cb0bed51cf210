#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# run.sh RESULTS_FILE: what a store with many versions costs.
set -euo pipefail

exec bench/harness/trees.sh node bench/store/store.js "$1"
