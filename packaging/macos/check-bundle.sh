#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check-bundle.sh BUNDLE.app: fails, and says why, when the bundle would not run on another Mac: a
# program for other processors, one that wants a newer system than the bundle promises, a library that
# is not brought along.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly here
# shellcheck source=packaging/macos/mach_o.sh
source "$here/mach_o.sh"

if (($# != 1)); then
    sed -n '3,5s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2
    exit 2
fi
readonly bundle=$1
promised=$(plutil -extract LSMinimumSystemVersion raw -o - "$bundle/Contents/Info.plist")
readonly promised

# is_older VERSION OTHER
is_older() {
    local major minor other_major other_minor rest
    IFS=. read -r major minor rest <<<"$1.0"
    IFS=. read -r other_major other_minor rest <<<"$2.0"
    ((major < other_major || (major == other_major && minor < other_minor)))
}

# The system that FILE says it needs, for its 64-bit Arm part.
system_of() {
    otool -arch arm64 -l "$1" | awk '
        $1 == "cmd" { command = $2 }
        command == "LC_BUILD_VERSION" && $1 == "minos" { print $2; exit }
        command == "LC_VERSION_MIN_MACOSX" && $1 == "version" { print $2; exit }'
}

# Libraries that FILE loads from neither the system nor the bundle. A library names itself among them.
foreign_libraries() {
    local own
    own=$(otool -arch arm64 -D "$1" | sed -n 2p)
    otool -arch arm64 -L "$1" | awk -v own="$own" '/^\t/ && $1 != own { print $1 }' |
        grep -vE '^(/usr/lib/|/System/|@rpath/|@executable_path/|@loader_path/)' || true
}

complaints() {
    local file needed library
    while IFS= read -r file; do
        if [[ " $(lipo -archs "$file") " != *' arm64 '* ]]; then
            printf '%s is not for arm64\n' "$file"
            continue
        fi
        needed=$(system_of "$file")
        if [[ -n $needed ]] && is_older "$promised" "$needed"; then
            printf '%s needs macOS %s, the bundle promises %s\n' "$file" "$needed" "$promised"
        fi
        foreign_libraries "$file" | while IFS= read -r library; do
            printf '%s loads %s\n' "$file" "$library"
        done
    done
}

files=$(mach_o_files "$bundle")
[[ -n $files ]] || die "$bundle holds no program."
found=$(complaints <<<"$files")
[[ -z $found ]] || die "$bundle runs on this machine alone:
$found"
