#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# make-dmg.sh BUNDLE.app RUNTIME IMAGE.dmg MACDEPLOYQT: a copy of the bundle that ships RUNTIME (a folder
# with local-server/ and node-runtime/node) and the libraries it needs, signed, in a disk image beside a
# link to the Applications folder. The bundle itself is left as it is.
#
#   ORVANTA_SIGN_IDENTITY     as sign.sh has it
#   ORVANTA_UNCHECKED_IMAGE   set to 1: an image that need run on this machine only
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly here
# shellcheck source=packaging/macos/mach_o.sh
source "$here/mach_o.sh"

if (($# != 4)); then
    sed -n '3,8s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2
    exit 2
fi
readonly bundle=$1 runtime=$2 image=$3 macdeployqt=$4
[[ -d $bundle ]] || die "$bundle does not exist."
[[ -d $runtime/local-server && -f $runtime/node-runtime/node ]] ||
    die "$runtime is no runtime: local-server/ or node-runtime/node is missing."
command -v "$macdeployqt" >/dev/null ||
    die "there is no program $macdeployqt; it comes with Qt, and -DORVANTA_MACDEPLOYQT= tells CMake where it is."
[[ -n ${ORVANTA_SIGN_IDENTITY:-} ]] ||
    die "ORVANTA_SIGN_IDENTITY is not set. It names a certificate, or is - for an image for this machine alone."

work=$(mktemp -d)
readonly work
trap 'rm -rf "$work"' EXIT
readonly copy=$work/image/Orvanta.app
mkdir "$work/image"
ditto "$bundle" "$copy"
for part in local-server node-runtime; do
    rm -rf "$copy/Contents/Resources/$part"
    ditto "$runtime/$part" "$copy/Contents/Resources/$part"
done
# Node and additions to it may have come without; what follows changes them.
chmod -R u+w "$copy"
"$macdeployqt" "$copy" -always-overwrite
[[ ${ORVANTA_UNCHECKED_IMAGE:-} == 1 ]] || "$here/check-bundle.sh" "$copy"
"$here/sign.sh" "$copy"

ln -s /Applications "$work/image/Applications"
hdiutil create -volname Orvanta -srcfolder "$work/image" -fs HFS+ -format UDZO -ov "$work/Orvanta.dmg"
"$here/sign.sh" "$work/Orvanta.dmg"
mv "$work/Orvanta.dmg" "$image"
printf 'Made %s\n' "$image"
