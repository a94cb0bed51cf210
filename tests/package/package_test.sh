#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# package_test.sh ROOT WORK: builds the Debian package and one that ships a newer runtime, looks at
# them, and lets package_life.sh install, use, upgrade and remove them on a clean Debian. What takes
# long is kept in WORK for the next run.
set -euo pipefail
root=$1
work=$(realpath -m "$2")
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly root work here build=$work/build
cd "$root"
# shellcheck source=tests/package/needs.sh
source tests/package/needs.sh

require dpkg-shlibdeps dpkg-dev
require lintian lintian
require debootstrap debootstrap
require ip iproute2
((EUID == 0)) || skip "Making a clean Debian takes root."
unshare --mount --net --pid --fork true 2>/dev/null || skip "This system lets nobody make namespaces."

configure() {
    local options=()
    command -v ccache >/dev/null && options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    cmake --preset package -B "$build" ${options[@]+"${options[@]}"} "$@" >"$work/configure.log" ||
        fail "$(cat "$work/configure.log")"
}

compile() {
    cmake --build "$build" --parallel 2 >"$work/build.log" || fail "$(tail -n 40 "$work/build.log")"
}

pack() {
    SOURCE_DATE_EPOCH=$(stat -c %Y CHANGELOG.md) cpack --config "$build/CPackConfig.cmake" -B "$work/$1" \
        >"$work/pack.log" 2>&1 || fail "$(cat "$work/pack.log")"
    ls "$work/$1"/*.deb
}

makes_a_package() {
    configure -DORVANTA_SHIPPED_RUNTIME="$build/stage/share/orvanta" -DORVANTA_PACKAGE_REVISION=1
    compile
    package=$(pack package)
}

makes_one_with_a_newer_runtime() {
    demo/make-runtime.sh 2.0.0 "$work/runtime"
    configure -DORVANTA_SHIPPED_RUNTIME="$work/runtime" -DORVANTA_PACKAGE_REVISION=2
    upgrade=$(pack upgrade)
}

pleases_the_checker() {
    lintian --fail-on error,warning --pedantic "$package" "$upgrade"
}

tells_the_version_of_the_program() {
    local program
    program=$("$build/stage/bin/orvanta-tray" --version)
    [[ "orvanta-tray $(dpkg-deb -f "$package" Version)" == "$program-1" ]] || fail "$program"
    [[ "orvanta-tray $(dpkg-deb -f "$upgrade" Version)" == "$program-2" ]] || fail "$program"
}

# The Node of the system is depended on, not packed.
is_small() {
    local size
    size=$(dpkg-deb -f "$package" Installed-Size)
    ((size < 3000)) || fail "installed it takes $size KiB"
}

finds_a_clean_system() {
    unshare --mount "$here/clean_root.sh" "$package" "$work/clean_root" >"$work/clean_root.log" 2>&1 ||
        fail "$(tail -n 40 "$work/clean_root.log")"
}

lives_there() {
    rm -rf "$work/life"
    unshare --mount --net --pid --fork --kill-child \
        "$here/package_life.sh" "$work/clean_root" "$work/life" "$package" "$upgrade"
}

mkdir -p "$work"
rm -rf "$work/package" "$work/upgrade" "$work/runtime"
for check in makes_a_package makes_one_with_a_newer_runtime pleases_the_checker \
    tells_the_version_of_the_program is_small finds_a_clean_system lives_there; do
    printf '%s, %d s\n' "$check" "$SECONDS"
    "$check"
done
printf 'done, %d s\n' "$SECONDS"
