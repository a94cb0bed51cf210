#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check_bundle_layout.sh ROOT BUILD VERSION: what the build for macOS configured in BUILD says about the
# bundle, where it puts what belongs there, and what the programs in it may do.
set -euo pipefail
readonly root=$1 build=$2 version=$3
# shellcheck source=tests/macos/plists.sh
source "$(dirname "${BASH_SOURCE[0]}")/plists.sh"
readonly contents=stage/Orvanta.app/Contents
readonly info=$build/$contents/Info.plist entitlements=$root/packaging/macos/node.entitlements

fail() {
    printf '%s\n' "$*" >&2
    exit 1
}

# expect FILE KEY VALUE
expect() {
    local found
    found=$(value "$1" "$2") || fail "$1: $2 is missing, or neither a string nor a truth value"
    [[ $found == "$3" ]] || fail "$1: $2 is \"$found\" instead of \"$3\""
}

require_plist "$info"
expect "$info" CFBundleDevelopmentRegion en
expect "$info" CFBundleExecutable orvanta-tray
expect "$info" CFBundleIconFile Orvanta
expect "$info" CFBundleIdentifier com.orvanta.tray
expect "$info" CFBundleInfoDictionaryVersion 6.0
expect "$info" CFBundleName Orvanta
expect "$info" CFBundlePackageType APPL
expect "$info" CFBundleShortVersionString "$version"
expect "$info" CFBundleVersion "$version"
expect "$info" LSMinimumSystemVersion 13.0
expect "$info" LSUIElement true
expect "$info" NSHighResolutionCapable true
expect "$info" NSHumanReadableCopyright "$(sed -n 's/^Copyright (c)/Copyright ©/p' "$root/LICENSE")"
expect "$info" NSPrincipalClass NSApplication
expect "$info" NSSupportsSuddenTermination false
[[ $version =~ ^[0-9]+\.[0-9]+\.[0-9]+$ ]] || fail "macOS takes no version like $version"
if keys "$info" | grep -x NSAppTransportSecurity; then
    fail "$info makes exceptions for the network"
fi

require_plist "$entitlements"
expect "$entitlements" com.apple.security.cs.allow-jit true
expect "$entitlements" com.apple.security.cs.allow-unsigned-executable-memory true
[[ $(keys "$entitlements" | wc -l) == 2 ]] || fail "$entitlements allows more than it should"
# The part of the system that reads them once they are signed takes no comments.
if grep -F '<!--' "$entitlements"; then
    fail "$entitlements holds a comment"
fi

grep -qx 'inline constexpr char kPlatform\[\] = "macos";' "$build/generated/orvanta_build_constants.h" ||
    fail 'runtimes are looked for under another platform than "macos"'
grep -qx 'inline constexpr char kArch\[\] = "arm64";' "$build/generated/orvanta_build_constants.h" ||
    fail 'runtimes are looked for under another processor than "arm64"'
for file in MacOS/orvanta-tray Resources/Orvanta.icns Resources/node-runtime/node; do
    grep -qE "^build ([^:|]* )?$contents/${file}[ :]" "$build/build.ninja" || fail "nothing makes $contents/$file"
done
grep -q "copy_directory [^ ]*/demo/local-server [^ ]*/$contents/Resources/local-server" "$build/build.ninja" ||
    fail "nothing makes $contents/Resources/local-server"
grep -q '^build dmg: ' "$build/build.ninja" || fail 'there is no target dmg'
grep -q "make-dmg.sh [^ ]*/stage/Orvanta.app [^ ]*/$contents/Resources [^ ]*/Orvanta-$version-arm64.dmg " "$build/build.ninja" ||
    fail 'the target dmg makes something else'
