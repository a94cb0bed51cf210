#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# notarise.sh IMAGE.dmg: has a signed image notarised and attaches the ticket to it.
#
#   ORVANTA_NOTARY_PROFILE   the keychain's profile, made once by `xcrun notarytool store-credentials`
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly here
# shellcheck source=packaging/macos/mach_o.sh
source "$here/mach_o.sh"

if (($# != 1)); then
    sed -n '3,5s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2
    exit 2
fi
readonly image=$1
readonly profile=${ORVANTA_NOTARY_PROFILE:-}
[[ -n $profile ]] ||
    die "ORVANTA_NOTARY_PROFILE is not set. It names a profile in the keychain; \"xcrun notarytool store-credentials NAME\" makes one."
[[ -f $image ]] || die "$image does not exist."
command -v xcrun >/dev/null || die "xcrun is missing; it comes with the command line tools of Xcode."

# field NAME REPORT: the last value of NAME that notarytool told.
field() {
    sed -n "s/^ *$1: *//p" <<<"$2" | tail -n 1
}

codesign --verify --strict "$image" || die "$image is not signed; packaging/macos/sign.sh does that."
report=$(xcrun notarytool submit "$image" --keychain-profile "$profile" --wait 2>&1) || {
    printf '%s\n' "$report" >&2
    die "the image could not be submitted."
}
printf '%s\n' "$report"
# A refusal is no failure of notarytool's.
if [[ $(field status "$report") != Accepted ]]; then
    xcrun notarytool log "$(field id "$report")" --keychain-profile "$profile" >&2 || true
    die "the image was not accepted; the log above says why."
fi
xcrun stapler staple "$image"
xcrun stapler validate "$image"
