#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# mistakes_test.sh ROOT VERSION HEADERS QCORO: the checks of this folder pass without and fail with each
# of the mistakes planted here. HEADERS and QCORO are those of configure.sh.
set -euo pipefail
readonly root=$1 version=$2 headers=$3 qcoro=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
readonly work copy=$work/copy checks=$root/tests/macos
mkdir "$copy"
tar -c -C "$root" --exclude=./build --exclude=./.git . | tar -x -C "$copy"

configures() {
    "$checks/configure.sh" "$copy" "$work/build" "$headers" "$qcoro" -DORVANTA_BUILD_TESTS=OFF "$@"
}
makes_bundle() {
    configures && "$checks/check_bundle_layout.sh" "$copy" "$work/build" "$version"
}
# The bundle of an earlier configuration will do where nothing is configured.
allows_little() {
    "$checks/check_bundle_layout.sh" "$copy" "$work/good" "$version"
}
sources_are_right() {
    "$checks/check_sources.sh" "$work/good" '/(socket_calls|staged_file|macos/(content_digest|process_identity)|login_item)'
}
scripts_are_right() {
    rm -rf "$work/few"
    mkdir -p "$work/few/packaging"
    cp -R "$copy/packaging/macos" "$work/few/packaging"
    "$checks/check_scripts.sh" "$work/few"
}
signs() { "$checks/sign_test.sh" "$copy"; }
notarises() { "$checks/notarise_test.sh" "$copy"; }
checks_bundle() { "$checks/check_bundle_test.sh" "$copy"; }
makes_image() { "$checks/make_dmg_test.sh" "$copy"; }

# replaced FILE OLD NEW: FILE in the copy has NEW in place of the first OLD.
replaced() {
    local text
    text=$(<"$root/$1")
    if [[ $text != *"$2"* ]]; then
        echo "$1 does not contain: $2"
        exit 1
    fi
    printf '%s\n' "${text/"$2"/"$3"}" >"$work/changed"
    cat "$work/changed" >"$copy/$1"
}

# caught CHECK FILE OLD NEW: with OLD replaced by NEW in FILE the check must fail.
caught() {
    replaced "${@:2}"
    if "$1" >/dev/null 2>&1; then
        echo "not caught by $1: $4 in $2"
        exit 1
    fi
    cp "$root/$2" "$copy/$2"
}

# What fails with a mistake must pass without.
makes_bundle >"$work/log" 2>&1 || {
    cat "$work/log"
    exit 1
}
cp -R "$work/build" "$work/good"
for check in allows_little scripts_are_right signs notarises checks_bundle makes_image sources_are_right; do
    "$check" >"$work/log" 2>&1 || {
        echo "$check fails without a mistake:"
        cat "$work/log"
        exit 1
    }
done

caught makes_bundle platform/macos/CMakeLists.txt 'locations.cpp' 'places.cpp'
caught makes_bundle CMakeLists.txt 'COMPONENTS Core Widgets' 'COMPONENTS Core Widgets DBus'
caught makes_bundle CMakeLists.txt 'OSX_ARCHITECTURES arm64' 'OSX_ARCHITECTURES x86_64'
caught makes_bundle base/CMakeLists.txt 'runtime_platform macos' 'runtime_platform darwin'
caught makes_bundle app/CMakeLists.txt 'orvanta_mac_bundle(orvanta-tray)' ''
caught makes_bundle demo/CMakeLists.txt '${orvanta_bundle}/Contents/Resources' '${orvanta_bundle}/Contents/SharedSupport'
readonly bundle=cmake/OrvantaMacBundle.cmake info=packaging/macos/Info.plist.in
caught makes_bundle $bundle 'RUNTIME_OUTPUT_DIRECTORY ${orvanta_bundle}' 'RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}'
caught makes_bundle $bundle '@ONLY)' 'COPYONLY)'
caught makes_bundle $bundle 'add_custom_target(dmg' 'add_custom_target(image'
caught makes_bundle $info '</string>' ''
caught makes_bundle $info '<key>LSUIElement</key>' ''
caught makes_bundle $info '<string>APPL</string>' '<text>APPL</text>'
caught makes_bundle $info '<key>CFBundleName</key>' '<key>LSUIElement</key><true/><key>CFBundleName</key>'
caught makes_bundle $info '<string>com.orvanta.tray</string>' '<string>com.orvanta.Tray</string>'
caught makes_bundle $info '<key>LSUIElement</key>' '<key>NSAppTransportSecurity</key><dict/><key>LSUIElement</key>'
if configures -DORVANTA_QCORO_SHA256="$(printf '0%.0s' {1..64})" >/dev/null 2>&1; then
    echo 'not caught: sources of QCoro with another digest'
    exit 1
fi

readonly entitlements=packaging/macos/node.entitlements
caught allows_little $entitlements '<dict>' '<dict><!-- why -->'
caught allows_little $entitlements '<true/>' '<false/>'
caught allows_little $entitlements '<dict>' '<dict><key>com.apple.security.cs.disable-library-validation</key><true/>'

caught scripts_are_right packaging/macos/sign.sh '"$1" ;;' '$1 ;;'
caught signs packaging/macos/sign.sh '-k1,1nr' '-k1,1n'
caught signs packaging/macos/sign.sh '*/node-runtime/node)' '*)'
caught signs packaging/macos/sign.sh '--options runtime ' ''
caught signs packaging/macos/sign.sh '== "$item"/Contents/MacOS/orvanta-tray' '== nothing'
caught signs packaging/macos/sign.sh '--strict --deep' '--strict'
caught signs packaging/macos/mach_o.sh '< 45' '< 90'
caught signs packaging/macos/mach_o.sh 'cffaedfe* | ' ''
caught notarises packaging/macos/notarise.sh '!= Accepted' '== Rejected'
caught notarises packaging/macos/notarise.sh 'xcrun stapler staple "$image"' ':'
caught checks_bundle packaging/macos/check-bundle.sh '|/System/' '|/System/|/opt/'
caught checks_bundle packaging/macos/check-bundle.sh 'minor < other_minor' 'minor > other_minor'
caught checks_bundle packaging/macos/check-bundle.sh "' arm64 '" "' x86_64 '"
caught makes_image packaging/macos/make-dmg.sh '== 1 ]] || "$here/check-bundle.sh" "$copy"' '== 1 ]] || true'
caught makes_image packaging/macos/make-dmg.sh 'ln -s /Applications "$work/image/Applications"' ':'
caught makes_image packaging/macos/make-dmg.sh 'chmod -R u+w "$copy"' ':'
caught makes_image packaging/macos/make-dmg.sh 'ditto "$runtime/$part"' 'ditto "$bundle/Contents/Resources/$part"'

# The headers are parsed once for all of these.
sed -i "s,$root/,$copy/,g" "$work/good/compile_commands.json"
replaced platform/posix/socket_calls.cpp 'SO_NOSIGPIPE, &on' 'SO_NOSIGPIPES, &on'
replaced platform/posix/staged_file.cpp 'm_file = FileDescriptor(::mkostemp' '::syscall(0); m_file = FileDescriptor(::mkostemp'
replaced platform/macos/content_digest.cpp 'static_cast<CC_LONG>(size)' 'size' # narrows
replaced platform/macos/process_identity.cpp 'info.pbi_start_tvsec' 'info.pbi_start_sec'
replaced platform/macos/login_item.mm 'SMAppServiceStatusEnabled' 'SMAppServiceStatusOn'
if said=$(sources_are_right 2>&1); then
    echo 'not caught: mistakes in sources'
    exit 1
fi
for file in posix/socket_calls.cpp posix/staged_file.cpp macos/content_digest.cpp macos/process_identity.cpp \
    macos/login_item.mm; do
    [[ ${said##*with errors: } == *"/platform/$file "* ]] || {
        echo "not caught: the mistake in $file"
        exit 1
    }
done
echo 'every mistake was caught'
