# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# What the scripts here share. Sourced. Written for the bash of macOS, which is version 3.2.

die() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# is_mach_o FILE: by its first bytes, so that neither names nor modes matter. The files of several
# processors begin like compiled Java, which has a version of 45 or more where they have a count.
is_mach_o() {
    local head
    head=$(od -An -tx1 -N8 "$1" | tr -d ' \n')
    case $head in
    cffaedfe* | cefaedfe* | feedfacf* | feedface*) return 0 ;;
    cafebabe* | cafebabf*) ((16#0${head:8} < 45)) ;;
    *) return 1 ;;
    esac
}

# mach_o_files BUNDLE: every program and library in it, one a line, links left out.
mach_o_files() {
    local file
    find "$1" -type f | LC_ALL=C sort | while IFS= read -r file; do
        if is_mach_o "$file"; then
            printf '%s\n' "$file"
        fi
    done
}
