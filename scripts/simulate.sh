#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the simulation with full optimisation and plays seeds: the whole application logic in a simulated
# world, checked after every step. A seed that fails is shrunk to a short script.
#   --seeds N     so many (100 without it)
#   --minutes M   for so long instead
#   --seed S      from this one on, or only this one; without it new ones, from the clock
#   --trace       also print what happened
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/setup.sh
source scripts/setup.sh

(($# > 0)) || set -- --seeds 100

configure_simulation() {
    cmake --preset release -B build/simulation -DORVANTA_BUILD_TESTS=ON -DORVANTA_BUILD_SIMULATION=ON
}

install_packages tests
step simulation-configure "Configuring the simulation." configure_simulation
step simulation-build "Building the simulation." \
    cmake --build build/simulation --parallel "$(processors)" --target simulate
exec build/simulation/tests/simulation/simulate "$@"
