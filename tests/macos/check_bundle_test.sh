#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check_bundle_test.sh ROOT: check-bundle.sh passes a bundle that runs anywhere and names what keeps
# others from it.
set -euo pipefail
# shellcheck source=tests/macos/fake_tools.sh
source "$(dirname "${BASH_SOURCE[0]}")/fake_tools.sh"
readonly check=$packaging/check-bundle.sh
tool plutil <<'EOT'
echo 13.0
EOT
tool lipo <<'EOT'
[[ $2 == *"${INTEL:-nothing}" ]] && echo x86_64 || echo "x86_64 arm64"
EOT
tool otool <<'EOT'
if [[ $3 == -D ]]; then
    printf '%s:\n' "$4"
    [[ $4 != *.dylib ]] || echo /opt/homebrew/lib/itself.dylib
    exit
fi
if [[ $3 == -L ]]; then
    printf '%s:\n' "$4"
    printf '\t%s (compatibility version 1.0.0, current version 1.0.0)\n' \
        /usr/lib/libSystem.B.dylib /System/Library/Frameworks/AppKit.framework/Versions/C/AppKit \
        @rpath/QtCore.framework/Versions/A/QtCore @executable_path/../Frameworks/libx.dylib
    [[ $4 != *.dylib ]] ||
        printf '\t%s (compatibility version 1.0.0, current version 1.0.0)\n' /opt/homebrew/lib/itself.dylib
    [[ $4 != *"${FOREIGN:-nothing}" ]] ||
        printf '\t%s (compatibility version 1.0.0, current version 1.0.0)\n' /opt/homebrew/lib/libuv.1.dylib
    exit
fi
needed=12.3
[[ $4 != *"${NEWER:-nothing}" ]] || needed=$NEEDED
printf 'Load command 9\n      cmd LC_BUILD_VERSION\n  cmdsize 32\n platform 1\n    minos %s\n      sdk 15.0\n' "$needed"
EOT

fresh_bundle
"$check" "$app" || fail 'a bundle for every Mac does not pass'
NEWER=/node NEEDED=13.0 "$check" "$app" || fail 'a program for the oldest system does not pass'
NEWER=/node NEEDED=13.1 refused 1 'node needs macOS 13.1, the bundle promises 13.0' "$check" "$app"
NEWER=/node NEEDED=14.0 refused 1 'node needs macOS 14.0, the bundle promises 13.0' "$check" "$app"
INTEL=addition.node refused 1 'native addition.node is not for arm64' "$check" "$app"
FOREIGN=/libqcocoa.dylib refused 1 'libqcocoa.dylib loads /opt/homebrew/lib/libuv.1.dylib' "$check" "$app"
find "$app" -type f -exec truncate -s 0 {} +
refused 1 'holds no program' "$check" "$app"
refused 2 'check-bundle.sh BUNDLE.app' "$check"
echo 'everything that keeps a bundle from other machines was named'
