#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# From a bare machine to tested: installs what is missing, builds and runs every test, plainly and then
# under the address and undefined behaviour sanitizers.
#   --quick   only plainly
# Other arguments are handed on to ctest.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/setup.sh
source scripts/setup.sh
# shellcheck source=scripts/skipped.sh
source scripts/skipped.sh

presets=(dev asan)
if [[ ${1-} == --quick ]]; then
    presets=(dev)
    shift
fi

install_packages tests
for preset in "${presets[@]}"; do
    build "$preset"
    say "Testing $preset."
    ctest --preset "$preset" --parallel "$(processors)" --no-tests=error "$@" |
        with_skip_reasons "build/$preset/Testing/Temporary/LastTest.log"
done
