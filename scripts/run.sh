#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# From a bare machine to the running tray: installs what is missing, builds, starts.
# Arguments are handed on to the tray.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/setup.sh
source scripts/setup.sh

install_packages
build release
say "Starting Orvanta in this terminal."
exec build/release/stage/bin/orvanta-tray --terminal "$@"
