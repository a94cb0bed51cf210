#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# From a bare machine to the running tray: installs what is missing, builds, starts. The menu is
# behind an icon on a desktop, else in this terminal.
# Arguments are handed on to the tray.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/setup.sh
source scripts/setup.sh

has_desktop() {
    [[ $(uname -s) == Darwin || -n ${DISPLAY-}${WAYLAND_DISPLAY-} ]]
}

(($# > 0)) || has_desktop || set -- --terminal

# What the tray prints is all that goes to the standard output.
{
    install_packages running
    build release
    case "$*" in
        --terminal) say "Starting Orvanta in this terminal." ;;
        "") say "Starting Orvanta; look for its icon in the panel or menu bar." ;;
    esac
} >&2
tray=build/release/stage/bin/orvanta-tray
[[ $(uname -s) != Darwin ]] || tray=build/release/stage/Orvanta.app/Contents/MacOS/orvanta-tray
exec "$tray" "$@"
