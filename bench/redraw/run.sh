#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# run.sh RESULTS_FILE: what a change of the menu costs, by how much of it changes.
set -euo pipefail
exec bench/harness/world.sh --desktop node bench/redraw/redraw.js "$1"
