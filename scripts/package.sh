#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Makes the Debian package of what is checked out, in build/package, and prints its SHA-256: installs
# what is missing, builds, packs. The same commit gives the same bytes.
#
#   SOURCE_DATE_EPOCH   the time that everything in the package gets; default: that of the commit
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/setup.sh
source scripts/setup.sh

readonly output=build/package

command -v dpkg-shlibdeps >/dev/null || command -v apt-get >/dev/null ||
    die "Packages are made on Debian and its relatives; this is none."
install_packages running
if [[ -z ${SOURCE_DATE_EPOCH-} ]]; then
    SOURCE_DATE_EPOCH=$(git log -1 --format=%ct) ||
        die "This is no git checkout, or git is missing or refuses this checkout, so set SOURCE_DATE_EPOCH to" \
            "the time that the package shall have."
    [[ -z $(git status --porcelain) ]] || say "There are uncommitted changes, and the package holds them."
fi
export SOURCE_DATE_EPOCH
# CPack writes it into the package.
umask 022

build package
rm -f "$output"/*.deb
step package-pack "Packing." cpack --config "$output/CPackConfig.cmake" -B "$output"
for package in "$output"/*.deb; do
    say "Made $package."
    say "SHA-256: $(sha256sum <"$package" | cut -d' ' -f1)"
done
