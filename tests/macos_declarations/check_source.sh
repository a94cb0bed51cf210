#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check_source.sh ROOT FILE OPTION...: has clang check the syntax and the types of FILE, a path
# below ROOT, against the declarations beside this script. OPTION: what the compiler needs to find
# the toolkit's headers.
set -euo pipefail
root=$1 file=$1/$2
shift 2
declarations=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
command -v clang++ >/dev/null || {
    echo 'clang++ is missing; on Debian it comes with the package clang.' >&2
    exit 1
}
language=(-x c++)
if [[ $file == *.mm ]]; then
    language=(-x objective-c++ -fobjc-arc -fobjc-runtime=macosx-13.0)
fi
# The warnings that the build makes errors of.
exec clang++ -fsyntax-only "${language[@]}" -std=c++20 -Wall -Wextra -Wpedantic -Wshadow \
    -Wnon-virtual-dtor -Woverloaded-virtual -Wconversion -Wno-sign-conversion -Werror \
    "$@" "-I$root" "-I$declarations" "$file"
