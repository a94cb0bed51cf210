#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# sign_test.sh ROOT: what sign.sh signs, in which order and how, and what it refuses.
set -euo pipefail
# shellcheck source=tests/macos/fake_tools.sh
source "$(dirname "${BASH_SOURCE[0]}")/fake_tools.sh"
readonly sign=$packaging/sign.sh identity='Developer ID Application: Somebody (TEAM)'
tool codesign <<'EOT'
[[ $* != *"${FAILING:-nothing}" ]]
EOT
tool xattr </dev/null

# expected HOW: the calls for a bundle, where HOW are the options of every signature.
expected() {
    local contents=$app/Contents
    cat <<END
xattr -cr $app
codesign $1 $contents/Frameworks/QtCore.framework/Versions/A/QtCore
codesign $1 $contents/Resources/local-server/lib/native addition.node
codesign $1 $contents/PlugIns/platforms/libqcocoa.dylib
codesign $1 --entitlements $packaging/node.entitlements $contents/Resources/node-runtime/node
codesign $1 $contents/Frameworks/QtCore.framework
codesign $1 $app
codesign --verify --strict --deep --verbose=2 $app
END
}

# From the inside out, each part once, hardened, and nobody but Node with exceptions.
fresh_bundle
ORVANTA_SIGN_IDENTITY=$identity "$sign" "$app"
expected "--force --sign $identity --options runtime --timestamp" | expect_calls

# For this machine alone: neither hardened nor with a time stamp.
fresh_bundle
ORVANTA_SIGN_IDENTITY=- "$sign" "$app"
expected '--force --sign - --timestamp=none' | expect_calls

# An image.
: >"$calls"
touch "$work/Orvanta.dmg"
ORVANTA_SIGN_IDENTITY=$identity "$sign" "$work/Orvanta.dmg"
expect_calls <<END
codesign --force --sign $identity --options runtime --timestamp $work/Orvanta.dmg
codesign --verify --strict --verbose=2 $work/Orvanta.dmg
END

# What holds an unsigned part is not signed.
fresh_bundle
FAILING=/node refused 1 '' env ORVANTA_SIGN_IDENTITY="$identity" "$sign" "$app"
[[ $(tail -n 1 "$calls") == *' --entitlements '*/node-runtime/node ]] || fail 'it went on after a failure'

# Without what it needs it does nothing.
fresh_bundle
refused 1 'ORVANTA_SIGN_IDENTITY is not set.' "$sign" "$app"
refused 1 'ORVANTA_SIGN_IDENTITY is not set.' env ORVANTA_SIGN_IDENTITY= "$sign" "$app"
refused 1 "$work/nothing.app does not exist." env ORVANTA_SIGN_IDENTITY=- "$sign" "$work/nothing.app"
refused 2 'sign.sh BUNDLE.app | IMAGE.dmg' "$sign"
expect_calls </dev/null
echo 'signed from the inside out'
