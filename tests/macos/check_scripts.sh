#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check_scripts.sh ROOT: has shellcheck read every shell script below ROOT.
set -euo pipefail
cd "$1"
command -v shellcheck >/dev/null || {
    echo 'shellcheck is missing; on Debian it is a package of that name.' >&2
    exit 1
}
# What a function takes may be left out (SC2119), and text for another shell is left as it is (SC2016).
find . -path ./build -prune -o -path ./.git -prune -o -name '*.sh' -print0 | sort -z |
    xargs -0 shellcheck --external-sources --source-path=. --exclude=SC2016,SC2119
