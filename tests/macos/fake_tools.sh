# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# A bundle and stand-ins for the programs of macOS, which note how they were called. Sourced with the
# root of the sources in $1; everything is below $work.

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
readonly root=$1 work tools=$work/tools calls=$work/calls app=$work/Orvanta.app
# shellcheck disable=SC2034
readonly packaging=$root/packaging/macos
mkdir "$tools"
PATH=$tools:$PATH
unset ORVANTA_SIGN_IDENTITY ORVANTA_NOTARY_PROFILE ORVANTA_UNCHECKED_IMAGE

fail() {
    printf 'failed: %s\n' "$*" >&2
    exit 1
}

# tool NAME: a stand-in that notes its call and then does what standard input says, in bash.
tool() {
    {
        printf '#!/usr/bin/env bash\nprintf "%%s\\n" "%s $*" >>"%s"\n' "$1" "$calls"
        cat
    } >"$tools/$1"
    chmod +x "$tools/$1"
}

# file PATH BYTES: BYTES as printf writes them.
file() {
    mkdir -p "$(dirname "$app/Contents/$1")"
    # shellcheck disable=SC2059
    printf "$2" >"$app/Contents/$1"
}

fresh_bundle() {
    local library=Frameworks/QtCore.framework arm='\xcf\xfa\xed\xfe'
    rm -rf "$app"
    file Info.plist '<plist/>'
    file MacOS/orvanta-tray "$arm"
    file "$library/Versions/A/QtCore" "$arm"
    ln -s Versions/A/QtCore "$app/Contents/$library/QtCore"
    file PlugIns/platforms/libqcocoa.dylib "$arm"
    file Resources/node-runtime/node '\xca\xfe\xba\xbe\x00\x00\x00\x02'
    file 'Resources/local-server/lib/native addition.node' "$arm"
    file Resources/local-server/cloudflared '#!/bin/sh\n'
    file Resources/local-server/server.js 'console.log(1);\n'
    file Resources/local-server/lib/Compiled.class '\xca\xfe\xba\xbe\x00\x00\x00\x34'
    file Resources/Orvanta.icns 'icns'
    file Resources/empty ''
    : >"$calls"
}

# expect_calls: the calls so far must be those on standard input.
expect_calls() {
    diff - "$calls" >&2 || fail "other calls than expected (>)"
}

# refused STATUS TEXT COMMAND...: COMMAND must end with STATUS and say TEXT on standard error.
refused() {
    local status=0 said
    said=$("${@:3}" 2>&1 >/dev/null) || status=$?
    ((status == $1)) || fail "status $status instead of $1: ${*:3}"
    [[ $said == *"$2"* ]] || fail "\"$2\" is missing in \"$said\""
}
