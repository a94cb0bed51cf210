#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# version_test.sh ROOT BUILD: all that tells the version tells the one of the project, and packaging, front
# ends, build and scripts do not spell it themselves.
set -euo pipefail
readonly root=$1 build=$2
cd "$root"
# shellcheck source=tests/package/needs.sh
source tests/package/needs.sh

version=$(sed -nE 's/^project\(.* VERSION ([0-9.]+) .*/\1/p' CMakeLists.txt)
readonly version generated=$build/packaging/linux
[[ $version =~ ^[0-9]+\.[0-9]+\.[0-9]+$ ]] || fail "the project's version is \"$version\""

# tells FILE TEXT
tells() {
    grep -qF -- "$2" "$1" || fail "$1 lacks \"$2\""
}

[[ $("$build/stage/bin/orvanta-tray" --version) == "orvanta-tray $version" ]] ||
    fail "the program says $("$build/stage/bin/orvanta-tray" --version)"
[[ $(grep -m1 '^## ' CHANGELOG.md) == "## $version, "* ]] || fail "CHANGELOG.md has another one first"
date=$(sed -nE "s/^## $version, //p" CHANGELOG.md)
tells "$generated/com.orvanta.tray.metainfo.xml" "<release version=\"$version\" date=\"$date\"/>"
tells "$generated/orvanta-tray.1" ".TH ORVANTA\\-TRAY 1 \"$date\" \"orvanta\\-tray $version\""
tells "$build/CPackConfig.cmake" "set(CPACK_PACKAGE_VERSION \"$version\")"
for folder in packaging app cmake scripts; do
    ! grep -rnwF -- "$version" "$folder" || fail "$folder spells the version itself"
done
