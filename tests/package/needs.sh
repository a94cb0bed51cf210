# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# What tests of this folder need of the machine. Sourced.

readonly skipped=77

fail() {
    printf 'failed: %s\n' "$*" >&2
    exit 1
}

# In the form in which the reasons for skipped cases are looked for.
skip() {
    printf '%s: Skipped\n%s\n\n' "$(basename "$0")" "$*"
    exit "$skipped"
}

# require PROGRAM PACKAGE
require() {
    command -v "$1" >/dev/null || skip "$1 is missing; on Debian it is in $2."
}
