#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# run.sh RESULTS_FILE: how soon the tray is gone once it is told to go.
set -euo pipefail
exec bench/harness/world.sh --desktop node bench/quit/quit.js "$1"
