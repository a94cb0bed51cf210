# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# The desktop of the user "person" below $root, and what its panel is told about the tray. Sourced by
# package_life.sh, which names the folders $root, $here and $logs.
# shellcheck disable=SC2154

readonly home=/home/person
# shellcheck disable=SC2034
readonly state=$root$home/.local/share/Orvanta
# The desktop's own files are elsewhere, so that all below $home comes from the tray.
readonly desk=/var/desk
readonly bus=unix:path=$desk/bus display=:7
readonly limit=30

# person COMMAND...: as this user, on this desktop.
person() {
    chroot --userspec=person:person "$root" env -i LC_ALL=C.UTF-8 PATH=/usr/bin:/bin HOME="$home" \
        XDG_RUNTIME_DIR=/run/user/1000 DISPLAY="$display" DBUS_SESSION_BUS_ADDRESS="$bus" \
        NO_AT_BRIDGE=1 "$@"
}

# await TEXT COMMAND...: until COMMAND succeeds; fails with TEXT after the limit.
await() {
    local text=$1 end=$((SECONDS + limit))
    shift
    until "$@"; do
        ((SECONDS < end)) || fail "$text has not come within $limit s"
        sleep 0.2
    done
}

start_desktop() {
    local service=$root$desk/services panel=$root$desk/config/xfce4/xfconf/xfce-perchannel-xml
    mkdir -p "$service" "$panel" "$root/run/user/1000" "$root/tmp/.X11-unix"
    chmod 1777 "$root/tmp/.X11-unix"
    chmod 700 "$root/run/user/1000"
    cp "$root/usr/share/dbus-1/services/org.xfce.Xfconf.service" "$service"
    cp "$here/panel.xml" "$panel/xfce4-panel.xml"
    sed "s|@address@|$bus|; s|@services@|$desk/services|" "$here/bus.conf.in" >"$root$desk/bus.conf"
    chown -R 1000:1000 "$root$desk" "$root/run/user/1000"

    person Xvfb "$display" -screen 0 1280x800x24 -nolisten tcp -noreset >"$logs/display" 2>&1 &
    await "the display" test -S "$root/tmp/.X11-unix/X${display#:}"
    person HOME="$desk" XDG_CONFIG_HOME="$desk/config" XDG_DATA_HOME="$desk/share" XDG_CACHE_HOME="$desk/cache" \
        dbus-daemon --config-file="$desk/bus.conf" --nofork >"$logs/bus" 2>&1 &
    await "the session bus" test -S "$root$desk/bus"
    person HOME="$desk" XDG_CONFIG_HOME="$desk/config" XDG_DATA_HOME="$desk/share" XDG_CACHE_HOME="$desk/cache" \
        xfce4-panel --disable-wm-check >"$logs/panel" 2>&1 &
    await "the panel" panel_takes_icons
}

# property SERVICE PATH INTERFACE NAME
property() {
    person dbus-send --print-reply --dest="$1" "$2" org.freedesktop.DBus.Properties.Get \
        string:"$3" string:"$4" 2>/dev/null
}

watcher_property() {
    property org.kde.StatusNotifierWatcher /StatusNotifierWatcher org.kde.StatusNotifierWatcher "$1"
}

panel_takes_icons() {
    watcher_property IsStatusNotifierHostRegistered | grep -q 'boolean true'
}

# "SERVICE/PATH" of the one status icon.
item() {
    watcher_property RegisteredStatusNotifierItems | sed -n 's/^ *string "\(.*\)"$/\1/p'
}

# item_property NAME
item_property() {
    local item
    item=$(item)
    [[ -n $item ]] && property "${item%%/*}" "/${item#*/}" org.kde.StatusNotifierItem "$1"
}

shows() {
    item_property ToolTip | grep -qF "string \"Orvanta $1\""
}

# menu METHOD ARGUMENT...: a call to the menu behind the icon.
menu() {
    local item path
    item=$(item)
    path=$(item_property Menu | sed -n 's/.*object path "\(.*\)"$/\1/p')
    person dbus-send --print-reply --dest="${item%%/*}" "$path" "com.canonical.dbusmenu.$1" "${@:2}"
}

# The entries, each as "NUMBER TEXT".
entries() {
    menu GetLayout int32:0 int32:-1 array:string:label | awk '
        /^ +int32 [0-9]+$/ { number = $2 }
        isLabel { sub(/^ *variant +string "/, ""); sub(/"$/, ""); print number, $0 }
        { isLabel = /string "label"$/ }'
}

has_entry() {
    entries | sed 's/^[0-9]* //' | grep -qxF "$1"
}

# choose TEXT: as with the mouse.
choose() {
    local number
    number=$(entries | sed -n "s|^\([0-9]*\) $1\$|\1|p")
    [[ -n $number ]] || fail "no entry \"$1\" in: $(entries)"
    menu Event int32:"$number" string:clicked variant:int32:0 uint32:0 >/dev/null
}
