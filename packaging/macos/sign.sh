#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# sign.sh BUNDLE.app | IMAGE.dmg: signs it, a bundle from the inside out, and checks the signature.
#
#   ORVANTA_SIGN_IDENTITY   the certificate's name in the keychain, "Developer ID Application: ...";
#                           "-" signs for this machine alone
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly here
# shellcheck source=packaging/macos/mach_o.sh
source "$here/mach_o.sh"

if (($# != 1)); then
    sed -n '3,6s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2
    exit 2
fi
readonly item=$1
readonly identity=${ORVANTA_SIGN_IDENTITY:-}
[[ -n $identity ]] ||
    die "ORVANTA_SIGN_IDENTITY is not set. It names a certificate, as \"security find-identity -v -p codesigning\" lists it, or is - to sign for this machine alone."
[[ -e $item ]] || die "$item does not exist."
command -v codesign >/dev/null || die "codesign is missing; it comes with the command line tools of Xcode."

# Without an identity there is no team, and the hardened runtime loads only libraries of the program's team.
how=(--options runtime --timestamp)
[[ $identity != - ]] || how=(--timestamp=none)

sign() {
    codesign --force --sign "$identity" "${how[@]}" "$@"
}

# What a bundle holds, deepest first: the signature of each part covers those below it.
parts() {
    {
        mach_o_files "$item"
        find "$item" -type d -name '*.framework'
    } | while IFS= read -r part; do
        depth=${part//[!\/]/}
        printf '%d %s\n' "${#depth}" "$part"
    done | LC_ALL=C sort -k1,1nr -k2 | cut -d' ' -f2-
}

# Node writes machine code and runs it, which the hardened runtime forbids. Of the exceptions that its
# makers sign it with these are the two about memory (allow-jit, allow-unsigned-executable-memory).
# Library validation stays on: native additions of a runtime are signed with its own identity. The
# reasons stand here because a comment in that file would become part of what the system parses.
sign_part() {
    case $1 in
    */node-runtime/node) sign --entitlements "$here/node.entitlements" "$1" ;;
    *) sign "$1" ;;
    esac
}

sign_bundle() {
    local list part
    # Attributes that the Finder or a download left behind make codesign refuse.
    xattr -cr "$item"
    list=$(parts)
    while IFS= read -r part; do
        # The program of the bundle itself is signed with it.
        [[ -z $part || $part == "$item"/Contents/MacOS/orvanta-tray ]] || sign_part "$part"
    done <<<"$list"
    sign "$item"
    codesign --verify --strict --deep --verbose=2 "$item"
}

if [[ -d $item ]]; then
    sign_bundle
else
    sign "$item"
    codesign --verify --strict --verbose=2 "$item"
fi
