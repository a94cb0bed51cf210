#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# trees.sh COMMAND [ARGUMENT...]: runs COMMAND in a world of its own (world.sh), with a folder for large trees on
# the file system of the build, BENCH_TREES.
#
# For minutes after a tree was removed ext4 passes over the numbers of its files whenever a file is made, which
# then takes several times as long. So when BENCH_TREES is set already, its owner removes what is in there, at
# the end of everything; otherwise the folder goes with COMMAND.
set -euo pipefail

kept=${BENCH_TREES-}
trees=$(mktemp -d "${kept:-$BENCH_BUILD}/trees.XXXXXX")
[[ -n $kept ]] || trap 'rm -rf "$trees"' EXIT
status=0
BENCH_TREES=$trees TMPDIR=$trees bench/harness/world.sh "$@" || status=$?
exit "$status"
