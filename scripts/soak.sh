#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the soak with full optimisation and keeps a real tray busy: connectors that crash, exit, hang, flood
# and ask for restarts; updates, rollbacks, a channel that comes and goes. What the tray holds is looked at
# all the time and goes to build/soak/samples.csv; the end is a table and a verdict (exit status 1: it grew).
#   --desktop                as the first: the tray as an icon on a panel instead of in a terminal
#   --hours H, --minutes M   for so long (2 hours without either)
#   --restarts N             instead, so many restarts of the connector as fast as can be
#   --seed S                 of the choice of deeds; without it a new one
#   --tray PATH              another build of the tray
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/setup.sh
source scripts/setup.sh

if [[ ${1-} == --help ]]; then
    sed -n '3,10s/^# \{0,1\}//p' "${BASH_SOURCE[0]}"
    exit
fi
program=soak
if [[ ${1-} == --desktop ]]; then
    program=soak_on_desktop
    shift
fi
(($# > 0)) || set -- --hours 2

configure_soak() {
    cmake --preset release -B build/soak -DORVANTA_BUILD_TESTS=ON
}

install_packages tests
step soak-configure "Configuring the soak." configure_soak
step soak-build "Building the soak." cmake --build build/soak --parallel "$(processors)" --target "$program"
command=("build/soak/tests/soak/$program" --csv build/soak/samples.csv "$@")
# A tray that runs here already has a connector on port 3000, which another one would adopt.
if unshare --map-root-user --net true 2>/dev/null; then
    # shellcheck disable=SC2016 # for the inner shell
    exec unshare --map-root-user --net bash -c 'ip link set lo up && exec "$@"' soak "${command[@]}"
fi
say "No network of its own can be had here: no other tray may run meanwhile."
exec "${command[@]}"
