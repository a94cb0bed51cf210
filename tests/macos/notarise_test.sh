#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# notarise_test.sh ROOT: an accepted image gets its ticket; any other outcome is a failure that says why.
set -euo pipefail
# shellcheck source=tests/macos/fake_tools.sh
source "$(dirname "${BASH_SOURCE[0]}")/fake_tools.sh"
readonly notarise=$packaging/notarise.sh image=$work/Orvanta.dmg
touch "$image"
tool codesign <<'EOT'
exit "${UNSIGNED:-0}"
EOT
tool xcrun <<'EOT'
case $1-$2 in
notarytool-submit)
    printf 'Submission ID received\n  id: 4711\nCurrent status: In Progress....\n'
    printf 'Processing complete\n  id: 4711\n  status: %s\n' "$OUTCOME"
    exit "${FAILURE:-0}"
    ;;
notarytool-log) echo "the reason for $3" ;;
esac
EOT
readonly submission="codesign --verify --strict $image
xcrun notarytool submit $image --keychain-profile people --wait"
export ORVANTA_NOTARY_PROFILE=people

: >"$calls"
OUTCOME=Accepted "$notarise" "$image" >/dev/null
expect_calls <<END
$submission
xcrun stapler staple $image
xcrun stapler validate $image
END

: >"$calls"
OUTCOME=Invalid refused 1 'the reason for 4711' "$notarise" "$image"
expect_calls <<END
$submission
xcrun notarytool log 4711 --keychain-profile people
END

: >"$calls"
OUTCOME=Accepted FAILURE=69 refused 1 'the image could not be submitted.' "$notarise" "$image"
expect_calls <<<"$submission"

: >"$calls"
OUTCOME=Accepted UNSIGNED=1 refused 1 "$image is not signed" "$notarise" "$image"
expect_calls <<<"codesign --verify --strict $image"

: >"$calls"
refused 1 'ORVANTA_NOTARY_PROFILE is not set.' env -u ORVANTA_NOTARY_PROFILE "$notarise" "$image"
refused 1 "$work/nothing.dmg does not exist." "$notarise" "$work/nothing.dmg"
refused 2 'notarise.sh IMAGE.dmg' "$notarise"
expect_calls </dev/null
echo 'only accepted images get a ticket'
