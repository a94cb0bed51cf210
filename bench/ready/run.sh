#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# run.sh RESULTS_FILE: how soon the icon and the terminal say Online once the connector has announced itself.
set -euo pipefail
exec bench/harness/world.sh --desktop node bench/ready/ready.js "$1"
