#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# From a bare machine to tested: installs what is missing, builds and runs every test, plainly and, after
# half a minute of every fuzzer, under the address and undefined behaviour sanitizers.
#   --quick   only plainly
# Other arguments are handed on to ctest.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/setup.sh
source scripts/setup.sh
# shellcheck source=scripts/skipped.sh
source scripts/skipped.sh

if [[ ${1-} == --help ]]; then
    sed -n '3,6s/^# \{0,1\}//p' "${BASH_SOURCE[0]}"
    exit
fi
is_quick=false
if [[ ${1-} == --quick ]]; then
    is_quick=true
    shift
fi

# run_tests PRESET [ARGUMENT OF CTEST...]
run_tests() {
    local preset=$1
    shift
    build "$preset"
    say "Testing $preset."
    ctest --preset "$preset" --parallel "$(processors)" --no-tests=error "$@" |
        with_skip_reasons "build/$preset/Testing/Temporary/LastTest.log"
}

install_packages tests
run_tests dev "$@"
if [[ $is_quick == false ]]; then
    scripts/fuzz.sh --seconds 30 --jobs "$(processors)"
    say "The tests on a desktop, of the package and of what is for macOS are not repeated under the sanitizers."
    run_tests asan "$@"
fi
