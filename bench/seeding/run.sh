#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# run.sh RESULTS_FILE: how long it takes to copy the shipped runtime into a new store.
set -euo pipefail

exec bench/harness/trees.sh node bench/seeding/seeding.js "$1"
