#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# From a bare machine to tested: installs what is missing, builds and runs every test, plainly and, after
# half a minute of every fuzzer, under the address and undefined behaviour sanitizers.
#   --quick     only plainly
#   --threads   also under the thread sanitizer
# One of the two, first. Other arguments are handed on to ctest.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/setup.sh
source scripts/setup.sh
# shellcheck source=scripts/skipped.sh
source scripts/skipped.sh

if [[ ${1-} == --help ]]; then
    sed -n '3,8s/^# \{0,1\}//p' "${BASH_SOURCE[0]}"
    exit
fi
is_quick=false
has_threads=false
case ${1-} in
--quick) is_quick=true && shift ;;
--threads) has_threads=true && shift ;;
esac

# sanitized COMMAND...: runs it where sanitizers of the age of GCC 12 find a place for their own memory,
# which they do not when addresses are more random than these many bits.
sanitized() {
    local bits=28
    if [[ -r /proc/sys/vm/mmap_rnd_bits ]] && (($(</proc/sys/vm/mmap_rnd_bits) > bits)); then
        setarch --addr-no-randomize "$@"
    else
        "$@"
    fi
}

# run_tests PRESET [ARGUMENT OF CTEST...]
run_tests() {
    local preset=$1 around=(sanitized)
    shift
    [[ $preset != dev ]] || around=(command)
    build "$preset"
    say "Testing $preset."
    "${around[@]}" ctest --preset "$preset" --parallel "$(processors)" --no-tests=error "$@" |
        with_skip_reasons "build/$preset/Testing/Temporary/LastTest.log"
}

install_packages tests
run_tests dev "$@"
if [[ $is_quick == false ]]; then
    sanitized scripts/fuzz.sh --seconds 30 --jobs "$(processors)"
    say "Not repeated under the sanitizers here: crash points, whose processes a supervisor holds at every call," \
        "the package, what is for macOS, and, for the time it takes, the tests on a desktop and the soak;" \
        "ctest --preset asan runs the latter two. The thread sanitizer comes with --threads."
    run_tests asan -E '^(tray_on_|desktop_|soak)' "$@"
    if [[ $has_threads == true ]]; then
        run_tests tsan -E '^(tray_on_|desktop_|soak)' "$@"
    fi
fi
