#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# package_life.sh CLEAN_ROOT WORK PACKAGE UPGRADE: a package is installed, used, upgraded to one that
# ships runtime 2.0.0, used and removed, on a copy of CLEAN_ROOT that vanishes with this script.
# Run as root in namespaces of its own for mounts, processes and the network: port 3000 is private.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly here clean_root=$1 work=$2 package=$3 upgrade=$4
readonly root=$work/memory/root logs=$work/logs

# shellcheck source=tests/package/desktop.sh
source "$here/desktop.sh"

fail() {
    printf 'failed: %s\n' "$*" >&2
    entries >&2 2>/dev/null || true
    tail -n 20 "$logs"/* >&2 || true
    exit 1
}

make_root() {
    ip link set lo up
    mkdir -p "$work/memory" "$logs"
    mount -t tmpfs -o mode=755 tmpfs "$work/memory"
    mkdir "$work"/memory/{upper,work,root}
    mount -t overlay -o "lowerdir=$clean_root,upperdir=$work/memory/upper,workdir=$work/memory/work" \
        overlay "$root"
    mount -t proc proc "$root/proc"
    mount -t tmpfs -o mode=1777 tmpfs "$root/tmp"
    mount -t tmpfs tmpfs "$root/run"
}

# Everything outside the folders of the desktop, with the contents of what programs are made of.
files() {
    (
        cd "$root"
        find . -xdev -path ./var/desk -prune -o -printf '%p %y %m %U:%G %l\n'
        find usr etc -xdev -type f -print0 | xargs -0 sha256sum
    ) | LC_ALL=C sort
}

# install FILE: as apt does once all that it depends on is there.
install_package() {
    cp "$1" "$root/tmp/package.deb"
    in_root dpkg -i /tmp/package.deb
}

in_root() {
    chroot "$root" env LC_ALL=C.UTF-8 "$@"
}

start_tray() {
    person orvanta-tray >>"$logs/tray" 2>&1 &
    tray=$!
    await "the icon" item_property ToolTip >/dev/null
}

quit_tray() {
    local status=0
    choose Quit
    wait "$tray" || status=$?
    ((status == 0)) || fail "the tray ended with status $status"
    await "the end of the connector" no_connector
}

# The command lines of the connectors that run.
connectors() {
    local process
    for process in "$root"/proc/[0-9]*; do
        tr '\0' ' ' 2>/dev/null <"$process/cmdline" | sed -n '/^[^ ]*node .*server[.]js/p'
    done
}

no_connector() {
    [[ -z $(connectors) ]]
}

# runs_from_the_store VERSION
runs_from_the_store() {
    [[ $(connectors) == *" $home/.local/share/Orvanta/runtime/versions/$1/local-server/server.js "* ]]
}

# current MEMBER: of the store's record.
current() {
    sed -n "s/^ *\"$1\" *: *\"\(.*\)\",*$/\1/p" "$state/runtime/current.json"
}

installs_and_comes_online() {
    install_package "$package"
    start_tray
    await '"Orvanta Not Paired"' shows 'Not Paired'
    await "the runtime line" has_entry 'Runtime: Runtime updater disabled in config.json.'
    [[ $(connectors) == *' /usr/share/orvanta/local-server/server.js '* ]] || fail "$(connectors)"
    choose 'Sign In / Pair'
    await '"Orvanta Online"' shows Online
    quit_tray
}

# Nobody answers at the address, and nobody is asked before a start.
switch_updates_on() {
    sed -i 's/"enabled": false/"enabled": true, "manifestBaseUrl": "http:\/\/127.0.0.1:9"/
            s/"checkOnStartup": true/"checkOnStartup": false/' "$state/config.json"
}

keeps_the_shipped_runtime_in_the_store() {
    switch_updates_on
    start_tray
    await '"Orvanta Online"' shows Online
    [[ $(current currentVersion) == 1.0.0 ]] || fail "seeded $(cat "$state/runtime/current.json")"
    runs_from_the_store 1.0.0 || fail "another one runs: $(connectors)"
}

promotes_the_newer_runtime_of_an_upgrade() {
    install_package "$upgrade"
    shows Online || fail "no longer online after the upgrade"
    choose Restart
    await "the promotion" has_entry 'Runtime: Promoted bundled runtime 2.0.0'
    await "its connector" runs_from_the_store 2.0.0
    await '"Orvanta Online"' shows Online
    [[ $(current currentVersion),$(current previousVersion) == 2.0.0,1.0.0 ]] ||
        fail "the store says $(cat "$state/runtime/current.json")"
    quit_tray
}

stays_with_it_in_the_next_session() {
    start_tray
    await '"Orvanta Online"' shows Online
    runs_from_the_store 2.0.0 || fail "another one runs: $(connectors)"
    quit_tray
}

is_removed_with_all_but_the_state() {
    local others
    in_root dpkg -P orvanta-tray
    [[ -d $state/runtime/versions/2.0.0 ]] || fail "the user's state is gone"
    files >"$work/files_after"
    # The folders on the way to it were not there before either.
    others=$(LC_ALL=C comm -3 "$work/files_before" "$work/files_after" |
        sed -E 's/^\t//; \|^\.'"$home"'/\.local(/share(/Orvanta(/[^ ]*)?)?)? [df] |d')
    [[ -z $others ]] || fail "changed for good: $others"
}

make_root
start_desktop
files >"$work/files_before"
for check in installs_and_comes_online keeps_the_shipped_runtime_in_the_store \
    promotes_the_newer_runtime_of_an_upgrade stays_with_it_in_the_next_session \
    is_removed_with_all_but_the_state; do
    printf '%s, %d s\n' "$check" "$SECONDS"
    "$check"
done
