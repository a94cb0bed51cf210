#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# configure.sh ROOT BUILD HEADERS QCORO [OPTION...]: configures the sources in ROOT for macOS, without a
# package of QCoro. HEADERS: the toolkit's folders, divided by semicolons; QCORO: the folder of
# qcorotask.h, of which an archive is made that takes the place of QCoro's sources. OPTION: for CMake.
set -euo pipefail
root=$1 build=$2 headers=$3 qcoro=$4
shift 4
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly root build headers qcoro here

rm -rf "$build"
mkdir -p "$build/qcoro-1/qcoro"
cp "$qcoro"/{qcorotask,coroutine,concepts_p}.h "$build/qcoro-1/qcoro"
tar -czf "$build/qcoro.tar.gz" -C "$build" qcoro-1
digest=$(sha256sum <"$build/qcoro.tar.gz")
cmake -G Ninja -S "$root" -B "$build" --toolchain "$here/toolchain.cmake" \
    -DQt6_DIR="$here/packages" -DBoost_DIR="$here/packages" -DGTest_DIR="$here/packages" \
    -DORVANTA_TEST_HEADERS="$headers" -DCMAKE_DISABLE_FIND_PACKAGE_QCoro6=ON \
    -DORVANTA_QCORO_URL="file://$build/qcoro.tar.gz" -DORVANTA_QCORO_SHA256="${digest%% *}" \
    -DORVANTA_ICONUTIL=iconutil -DORVANTA_MACDEPLOYQT=macdeployqt "$@"
