#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# make_dmg_test.sh ROOT: what an image holds, in which order it comes about, and that one that must not
# be made is not left behind.
set -euo pipefail
# shellcheck source=tests/macos/fake_tools.sh
source "$(dirname "${BASH_SOURCE[0]}")/fake_tools.sh"
readonly make_dmg=$packaging/make-dmg.sh image=$work/out.dmg runtime=$work/runtime
tool ditto <<'EOT'
mkdir -p "$(dirname "$2")" && cp -R "$1" "$2"
EOT
tool macdeployqt <<'EOT'
printf "\xcf\xfa\xed\xfe" >"$1/Contents/Frameworks/deployed.dylib"; exit "${STATUS:-0}"
EOT
tool codesign </dev/null
tool xattr </dev/null
tool plutil <<'EOT'
echo 13.0
EOT
tool lipo <<'EOT'
echo "${PROCESSORS:-arm64}"
EOT
tool otool </dev/null
# The image is a listing of what it was made of.
tool hdiutil <<'EOT'
cd "$5"
{
    find . -type l -printf '%p -> %l\n' -o ! -perm -u+w -printf 'read-only: %p\n' -o -print
    cat Orvanta.app/Contents/Resources/local-server/server.js
} >"${@: -1}"
EOT
mkdir -p "$runtime"/{local-server,node-runtime}
echo 'the shipped runtime' >"$runtime/local-server/server.js"
printf '\xcf\xfa\xed\xfe' >"$runtime/node-runtime/node"
chmod a-w "$runtime"/*/*
export TMPDIR=$work/tmp ORVANTA_SIGN_IDENTITY=-
mkdir "$TMPDIR"

make() {
    "$make_dmg" "$app" "$runtime" "$image" macdeployqt
}

nothing_is_left() {
    [[ ! -e $image ]] || fail 'an image was made'
    [[ -z $(ls "$TMPDIR") ]] || fail 'something was left behind'
}

fresh_bundle
before=$(find "$app" | sort)
make >/dev/null
has() {
    grep -qxF "$1" "$image" || fail "not in the image: $1"
}
has './Applications -> /Applications'
has './Orvanta.app/Contents/MacOS/orvanta-tray'
has './Orvanta.app/Contents/Frameworks/deployed.dylib'
has 'the shipped runtime'
! grep '^read-only: ' "$image" || fail 'parts of the image could not be signed'
! grep -q Compiled.class "$image" || fail 'parts of the runtime of the build are in the image'
[[ $(find "$app" | sort) == "$before" ]] || fail 'the bundle of the build was changed'
# Changed, then looked at, then signed, then packed, then signed.
sed -nE 's/^(macdeployqt|lipo|codesign --force|hdiutil create) .*(deployed.dylib|Orvanta.app|Orvanta.dmg)( .*)?$/\1 \2/p' \
    "$calls" >"$work/order"
diff - "$work/order" >&2 <<'END' || fail 'another order than expected (>)'
macdeployqt Orvanta.app
lipo deployed.dylib
codesign --force deployed.dylib
codesign --force Orvanta.app
hdiutil create Orvanta.dmg
codesign --force Orvanta.dmg
END
rm "$image"
nothing_is_left

PROCESSORS=x86_64 refused 1 'runs on this machine alone' make
nothing_is_left
STATUS=1 refused 1 '' make
nothing_is_left
refused 1 'ORVANTA_SIGN_IDENTITY is not set.' env -u ORVANTA_SIGN_IDENTITY "$make_dmg" "$app" "$runtime" "$image" macdeployqt
mv "$runtime/node-runtime/node" "$work/node"
refused 1 "$runtime is no runtime" make
mv "$work/node" "$runtime/node-runtime/node"
nothing_is_left
PROCESSORS=x86_64 ORVANTA_UNCHECKED_IMAGE=1 make >/dev/null
[[ -e $image ]] || fail 'no image for this machine alone'
rm "$image"
refused 1 'there is no program ORVANTA_MACDEPLOYQT-NOTFOUND' "$make_dmg" "$app" "$runtime" "$image" ORVANTA_MACDEPLOYQT-NOTFOUND
nothing_is_left
refused 2 'make-dmg.sh BUNDLE.app RUNTIME IMAGE.dmg MACDEPLOYQT' "$make_dmg" "$app"
echo 'images hold what they should'
