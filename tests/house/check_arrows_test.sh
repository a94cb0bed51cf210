#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check_arrows_test.sh ROOT: the check passes here and catches each kind of forbidden include.
set -euo pipefail
root=$1
check=$root/tests/house/check_arrows.sh
"$check" "$root"

copy=$(mktemp -d)
trap 'rm -rf "$copy"' EXIT
cp -rL "$root"/{base,platform,hostcontrol,runtime,connector,app} "$copy"

# caught FILE LINE: with LINE added to FILE the check must fail.
caught() {
    printf '%s\n' "$2" >>"$copy/$1"
    if "$check" "$copy" >/dev/null; then
        echo "not caught: $2 in $1"
        exit 1
    fi
    cp "$root/$1" "$copy/$1"
    "$check" "$copy" >/dev/null
}

caught base/json.h '#include "platform/main_queue.h"'
caught platform/main_queue.h '#include "connector/connection_status.h"'
caught hostcontrol/host_control_server.h '#include "connector/desktop_connector_manager.h"'
caught app/menu_entries.h '#include "platform/posix/terminal_device.h"'
caught app/icons/menu_bar_icons.h '#include "platform/linux/tray_host.h"'
caught app/terminal_screen.h '#include "platform/posix/child_process.h"'
caught runtime/mac_runtime_updater.h '#include "hostcontrol/host_control_server.h"'
caught connector/manager_status.cpp '#include "platform/qt/qt_main_queue.h"'
caught connector/manager_status.cpp '#include "app/composition.h"'
caught connector/manager_status.cpp '#include <QTimer>'
caught connector/manager_status.cpp '#include <unistd.h>'
caught runtime/mac_runtime_updater.cpp '#include <sys/stat.h>'
caught hostcontrol/host_control_server.cpp '#include <QNetworkAccessManager>'
caught hostcontrol/host_control_server.cpp '#ifdef __APPLE__'
caught platform/curl/curl_sessions.h '#include "platform/qt/qt_main_queue.h"'
echo 'every forbidden arrow was caught'
