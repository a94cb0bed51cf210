#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# run.sh RESULTS_FILE: how soon the connector is back after it was killed.
set -euo pipefail
exec bench/harness/world.sh --desktop node bench/restart/restart.js "$1"
