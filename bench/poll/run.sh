#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# run.sh RESULTS_FILE: the processor time of one status poll.
set -euo pipefail
exec bench/harness/world.sh node bench/poll/poll.js "$1"
