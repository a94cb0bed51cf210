#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# run.sh RESULTS_FILE: what programs at rest take of the processor, and what the tray says on the session bus.
set -euo pipefail
exec bench/harness/world.sh --desktop node bench/idle/idle.js "$1"
