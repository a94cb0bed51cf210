#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Packs what is checked out twice, in two folders, under two umasks and time zones, and compares the
# executables and the packages byte for byte. Takes two whole builds: nothing comes from a compiler
# cache.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/setup.sh
source scripts/setup.sh

install_packages running
git ls-files >/dev/null || die "This is no git checkout, or git is missing or refuses this checkout."
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}
export SOURCE_DATE_EPOCH CCACHE_DISABLE=1
work=$(mktemp -d)
readonly work
trap 'rm -rf "$work"' EXIT

# What is checked out, with changes that are not committed yet.
take_sources() {
    mkdir "$work/sources"
    git ls-files -z --cached --others --exclude-standard |
        while IFS= read -r -d '' file; do [[ ! -e $file ]] || printf '%s\0' "$file"; done |
        tar -c --null --no-recursion -T - | tar -x -C "$work/sources"
}

# packed FOLDER UMASK ZONE: a build of its own.
packed() {
    (
        umask "$2"
        mkdir -p "$1"
        tar -c -C "$work/sources" . | tar -x --no-same-permissions -C "$1"
        TZ=$3 step "reproducible-$(basename "$1")" "Packing in $1." "$1/scripts/package.sh"
    )
}

# same FILE...: whether all have the same bytes; says so.
same() {
    sha256sum "$@"
    [[ $(sha256sum "$@" | cut -d' ' -f1 | sort -u | wc -l) == 1 ]]
}

readonly one=$work/one two=$work/another/folder/of/a/longer/name/two
take_sources
packed "$one" 022 UTC
packed "$two" 002 Asia/Kathmandu
say "The executables before they are stripped, then the packages:"
same "$one"/build/package/stage/bin/orvanta-tray "$two"/build/package/stage/bin/orvanta-tray ||
    die "The executables differ."
for module in desktop digest; do
    same {"$one","$two"}/build/package/stage/lib/orvanta-tray/modules/$module.so || die "The modules differ."
done
same "$one"/build/package/*.deb "$two"/build/package/*.deb || die "The packages differ."
say "They are the same."
