#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# world.sh [--desktop] COMMAND [ARGUMENT...]: runs COMMAND in a world of its own and with its exit status.
#
# The world has a home, a network of nothing but the loopback interface, and processes of its own; with
# --desktop also a display and a session bus. None of it outlasts COMMAND. Its folder, on the file system
# of TMPDIR, is BENCH_WORLD.
set -euo pipefail

# Everything that is still running in there ends with the first process of the world.
enter() {
    local identity=() world status=0
    ((EUID == 0)) || identity=(--user --map-root-user)
    world=$(mktemp -d "${TMPDIR:-/tmp}/orvanta-bench.XXXXXX")
    # shellcheck disable=SC2064
    trap "rm -rf '$world'" EXIT
    BENCH_WORLD=$world unshare ${identity[@]+"${identity[@]}"} --net --pid --fork --mount-proc --kill-child \
        "${BASH_SOURCE[0]}" --inside "$@" || status=$?
    return "$status"
}

# What the tester's own desktop would have programs do.
forget_desktop() {
    local name
    for name in $(compgen -e); do
        case $name in
        QT_* | GTK_* | GDK_* | XDG_* | DBUS_* | DISPLAY | WAYLAND_DISPLAY | SESSION_MANAGER | XAUTHORITY)
            unset "$name"
            ;;
        esac
    done
}

furnish() {
    ip link set lo up
    forget_desktop
    export HOME=$BENCH_WORLD/home LC_ALL=C.UTF-8 NO_AT_BRIDGE=1 GSETTINGS_BACKEND=memory
    export XDG_CONFIG_HOME=$HOME/.config XDG_DATA_HOME=$HOME/.local/share XDG_CACHE_HOME=$HOME/.cache
    export XDG_STATE_HOME=$HOME/.local/state XDG_RUNTIME_DIR=$BENCH_WORLD/run TMPDIR=$BENCH_WORLD/tmp
    mkdir -p "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_CACHE_HOME" "$XDG_STATE_HOME" "$XDG_RUNTIME_DIR" "$TMPDIR"
    # In memory, as login managers make it.
    mount -t tmpfs -o mode=700 run "$XDG_RUNTIME_DIR"
}

# Sockets and locks of displays lie in a folder that all worlds share, and those of another world would
# look like remains, because its processes cannot be seen.
start_display() {
    local number=$BENCH_WORLD/display sockets=/tmp/.X11-unix
    mkdir -p "$sockets" "$BENCH_WORLD/displays"
    mount --bind "$BENCH_WORLD/displays" "$sockets"
    mkfifo "$number"
    Xvfb -displayfd 3 -nolock -screen 0 1280x800x24 -nolisten tcp -noreset 3>"$number" >/dev/null 2>&1 &
    DISPLAY=:$(head -n 1 "$number")
    export DISPLAY
}

# Starts none of the services of the machine but the one that panels keep their settings with.
start_bus() {
    local configuration=$BENCH_WORLD/bus.conf services=$BENCH_WORLD/services address=$BENCH_WORLD/bus.address
    mkdir -p "$services"
    cp /usr/share/dbus-1/services/org.xfce.Xfconf.service "$services/" 2>/dev/null || true
    sed "s|@address@|unix:path=$XDG_RUNTIME_DIR/bus|; s|@services@|$services|" \
        "$(dirname "${BASH_SOURCE[0]}")/../../tests/package/bus.conf.in" >"$configuration"
    mkfifo "$address"
    dbus-daemon --config-file="$configuration" --nofork --print-address=3 3>"$address" >/dev/null 2>&1 &
    DBUS_SESSION_BUS_ADDRESS=$(head -n 1 "$address")
    export DBUS_SESSION_BUS_ADDRESS
}

if [[ ${1-} != --inside ]]; then
    enter "$@"
    exit
fi
shift
furnish
if [[ ${1-} == --desktop ]]; then
    shift
    start_display
    start_bus
fi
# Not in place of this shell, which collects the orphans of the world.
"$@"
