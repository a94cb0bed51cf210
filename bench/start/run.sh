#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# run.sh RESULTS_FILE: how soon the connector is executed once the tray is.
set -euo pipefail
exec bench/harness/world.sh --desktop node bench/start/start.js "$1"
