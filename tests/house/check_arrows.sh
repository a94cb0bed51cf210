#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check_arrows.sh ROOT: fails and names the line where a room of the house includes what it must
# not know. The picture of the allowed arrows is in docs/architecture.md.
set -euo pipefail
cd "$1"
failed=0

# room ALLOWED FILES...: every quoted include of FILES must match the expression ALLOWED.
room() {
    local allowed=$1
    shift
    local bad
    bad=$(grep -HnE '^[[:space:]]*#[[:space:]]*(include|import)[[:space:]]*"' "$@" |
        grep -vE "\"(orvanta_build_constants\.h|$allowed)\"" || true)
    if [ -n "$bad" ]; then
        printf 'forbidden arrow:\n%s\n' "$bad"
        failed=1
    fi
}

# logic FILES...: neither the system nor the windowing and network parts of the toolkit.
logic() {
    local bad
    bad=$(grep -HnE '#[[:space:]]*include[[:space:]]*<(Q(Network|Tcp|Udp|Local|Http|Process|Thread|Mutex|Application|Gui|Widget|Menu|System|DBus|File|Dir|Timer|SocketNotifier|Settings|DesktopServices)[A-Za-z]*|sys/|net/|netinet/|arpa/|[a-z_]+\.h>|thread>|mutex>|fstream>|filesystem>|random>)' "$@" || true)
    if [ -n "$bad" ]; then
        printf 'logic that reaches past the platform seam:\n%s\n' "$bad"
        failed=1
    fi
}

# files FOLDER: its sources, subfolders left out.
files() {
    find "$1" -maxdepth 1 -name '*.h' -o -maxdepth 1 -name '*.cpp' -o -maxdepth 1 -name '*.mm'
}

mapfile -t base < <(files base)
mapfile -t seam < <(files platform)
mapfile -t hostcontrol < <(files hostcontrol)
mapfile -t runtime < <(files runtime)
mapfile -t connector < <(files connector)
mapfile -t app < <({ files app; files app/icons; } | grep -vE '/(composition|desktop_toolkit_loaded|desktop_toolkit|http_sessions|main|run_tray|terminal_application)\.')

interface='platform/[a-z_]+\.h'
room 'base/[a-z_]+\.h' "${base[@]}"
room "base/[a-z_]+\.h|$interface" "${seam[@]}"
room "base/[a-z_]+\.h|$interface|hostcontrol/[a-z_]+\.h" "${hostcontrol[@]}"
room "base/[a-z_]+\.h|$interface|runtime/[a-z_]+\.h" "${runtime[@]}"
room "base/[a-z_]+\.h|$interface|(hostcontrol|runtime|connector)/[a-z_]+\.h" "${connector[@]}"
# The terminal front end is a rim of its own: it reads and writes a terminal.
terminal='platform/posix/(file_descriptor|output_stream|terminal_device)\.h'
mapfile -t rim < <(printf '%s\n' "${app[@]}" | grep -E '/(command_reader|terminal_front_end|terminal_screen)\.')
mapfile -t menu < <(printf '%s\n' "${app[@]}" | grep -vE '/(command_reader|terminal_front_end|terminal_screen)\.')
front_end="base/[a-z_]+\.h|$interface|(hostcontrol|runtime|connector|app|app/icons)/[a-z_]+\.h"
room "$front_end" "${menu[@]}"
room "$front_end|$terminal" "${rim[@]}"
logic "${base[@]}" "${hostcontrol[@]}" "${runtime[@]}" "${connector[@]}"

for part in posix http beast curl qt linux macos; do
    mapfile -t sources < <(find "platform/$part" -name '*.h' -o -name '*.cpp' -o -name '*.mm')
    [ ${#sources[@]} -gt 0 ] || continue
    case $part in
    posix | http) own="$part" ;;
    beast | curl) own="($part|http|posix)" ;;
    *) own="($part|posix)" ;;
    esac
    room "base/[a-z_]+\.h|$interface|platform/$own/[a-z_]+\.h" "${sources[@]}"
done

# The operating system is asked for in platform/ and in the build only.
if grep -rnE '^[[:space:]]*#[[:space:]]*(if|ifdef|ifndef|elif).*(__APPLE__|__linux__|Q_OS_)' \
    base connector runtime hostcontrol app; then
    echo 'a choice by operating system outside platform/'
    failed=1
fi
exit $failed
