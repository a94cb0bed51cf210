#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# run.sh RESULTS_FILE: how long an installation takes and what memory it needs.
set -euo pipefail

exec bench/harness/trees.sh node bench/install/install.js "$1"
