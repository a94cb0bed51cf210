#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# profile.sh: what the tray's start, a poll and an installation consist of: instructions as callgrind counts them,
# the heap as heaptrack does. Prints them; what was recorded stays in build/bench/profiles, for callgrind_annotate
# and heaptrack_print.
#
# Takes build/bench as bench/run.sh leaves it (any of its groups will do), and two minutes. It counts and
# measures no time, so other work on the machine does not matter.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
# shellcheck source=scripts/setup.sh
source scripts/setup.sh

BENCH_BUILD=$(realpath "${BENCH_BUILD:-build/bench}")
export BENCH_BUILD
[[ -x $BENCH_BUILD/stage/bin/orvanta-tray && -e $BENCH_BUILD/bench/profile/bench_process_descriptor.so ]] ||
    die "There is nothing to profile yet, or it is of old: run bench/run.sh quit first."
mapfile -t missing < <(printf '%s\n' valgrind heaptrack | missing_debian_packages)
if ((${#missing[@]} > 0)); then
    require_root "${missing[@]}"
    step profile-packages "Packages: installing ${missing[*]}." \
        as_root apt-get "${apt_options[@]}" install -y --no-install-recommends "${missing[@]}"
fi
rm -rf "$BENCH_BUILD/profiles"
mkdir -p "$BENCH_BUILD/profiles"
bench/harness/trees.sh node bench/profile/instructions.js "$BENCH_BUILD/profiles"
bench/harness/trees.sh node bench/profile/heap.js "$BENCH_BUILD/profiles"
