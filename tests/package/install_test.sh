#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# install_test.sh ROOT BUILD: what an installation to a prefix consists of, and that it runs from there.
set -euo pipefail
readonly root=$1 build=$2
cd "$root"
# shellcheck source=tests/package/needs.sh
source tests/package/needs.sh
require appstreamcli appstream
require desktop-file-validate desktop-file-utils
require groff groff-base
require systemd-analyze systemd

work=$(realpath "$(mktemp -d)")
tray=
readonly work prefix="$work/a prefix"
end() {
    [[ -z $tray ]] || kill "$tray" 2>/dev/null || true
    rm -rf "$work"
}
trap end EXIT

expected() {
    local size
    printf '%s\n' bin/orvanta-tray lib/orvanta-tray/modules/{desktop,digest}.so lib/systemd/user/orvanta-tray.service \
        share/applications/com.orvanta.tray.desktop share/doc/orvanta-tray/{changelog.gz,copyright} \
        share/icons/hicolor/scalable/apps/orvanta-tray.svg share/man/man1/orvanta-tray.1.gz \
        share/metainfo/com.orvanta.tray.metainfo.xml share/orvanta/node-runtime/node
    for size in 16 22 24 32 48 64 128 256; do
        printf 'share/icons/hicolor/%dx%d/apps/orvanta-tray.png\n' "$size" "$size"
    done
    (cd "$build/stage" && find share/orvanta/local-server -type f)
}

installs_these_files() {
    (umask 077 && cmake --install "$build" --prefix "$prefix") >"$work/log" || fail "$(cat "$work/log")"
    diff <(expected | LC_ALL=C sort) <(cd "$prefix" && find . ! -type d -printf '%P\n' | LC_ALL=C sort) ||
        fail "other files were installed"
}

# Under a umask that hides what is made from others. Folders that are not the tray's own follow it.
everybody_may_use_them() {
    local others
    others=$(cd "$prefix" && find bin/orvanta-tray share/orvanta/{node-runtime/node,local-server/cloudflared} \
        ! -perm 755 && find . -type f ! -perm 755 ! -perm 644 && find share/orvanta -type d ! -perm 755)
    [[ -z $others ]] || fail "other permissions: $others"
}

they_are_what_desktops_expect() {
    desktop-file-validate "$prefix/share/applications/com.orvanta.tray.desktop"
    appstreamcli validate --no-net "$prefix/share/metainfo/com.orvanta.tray.metainfo.xml"
    zcat "$prefix/share/man/man1/orvanta-tray.1.gz" | groff -man -ww -z 2>"$work/complaints"
    [[ ! -s $work/complaints ]] || fail "$(cat "$work/complaints")"
    cmp "$prefix/share/orvanta/local-server/server.js" demo/local-server/server.js
}

# The program's name in the unit must hold where it was installed.
the_unit_starts_the_installed_program() {
    local unit=$prefix/lib/systemd/user/orvanta-tray.service
    XDG_RUNTIME_DIR=$work systemd-analyze --user --man=no verify "$unit" >"$work/complaints" 2>&1 ||
        fail "$(cat "$work/complaints")"
    grep -qxF "ExecStart=\"$prefix/bin/orvanta-tray\" --terminal" "$unit" || fail "$(cat "$unit")"
}

# A tray adopts whatever answers like a connector. Asked by standard input, which no process shows.
the_installed_connector_runs() {
    grep -qzxF -f - <(cat /proc/[0-9]*/cmdline 2>/dev/null) <<<"$prefix/share/orvanta/local-server/server.js"
}

# As the unit does it: nothing to read, and no terminal.
it_runs() {
    local end=$((SECONDS + 30))
    mkdir -p "$work/home"
    env -i HOME="$work/home" TMPDIR="$work" LC_ALL=C.UTF-8 PATH="$PATH" "$prefix/bin/orvanta-tray" --terminal \
        </dev/null >"$work/said" 2>&1 &
    tray=$!
    until grep -q 'Status: Not Paired' "$work/said" && the_installed_connector_runs; do
        ((SECONDS < end)) || fail "the connector from there does not run, or not well: $(cat "$work/said")"
        sleep 0.1
    done
    kill "$tray"
    wait "$tray" || fail "status $? after SIGTERM"
    tray=
}

for check in installs_these_files everybody_may_use_them they_are_what_desktops_expect the_unit_starts_the_installed_program it_runs; do
    printf '%s\n' "$check"
    "$check"
done
