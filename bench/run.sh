#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# bench/run.sh [GROUP...]: measures the tray beside its peers and prints one table. Without groups all are run.
#
# Installs the peers, builds what people run into build/bench, and leaves the raw values in
# build/bench/results.jsonl. Needs Linux and about 30 minutes in which the machine does nothing else.
#
#   BENCH_ROUNDS        how often each contender is measured; default: 5
#   BENCH_IDLE_SECONDS  how long programs at rest are watched; default: 600
#   BENCH_BUILD         a build directory to take as it is, instead of build/bench
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/setup.sh
source scripts/setup.sh

readonly pm2_version=7.0.4

bench_packages() {
    debian_packages
    printf '%s\n' xvfb dbus dbus-bin xfce4-panel xfconf iproute2 util-linux libcurl4-openssl-dev \
        s6 supervisor keepassxc flameshot qlipper network-manager-gnome syncthingtray
    command -v npm >/dev/null || echo npm
}

install_peers() {
    local missing=()
    mapfile -t missing < <(bench_packages | sort -u | missing_debian_packages)
    if ((${#missing[@]} > 0)); then
        require_root "${missing[@]}"
        step bench-packages-list "Packages: updating the list." as_root apt-get "${apt_options[@]}" update
        step bench-packages "Packages: installing ${missing[*]}." \
            as_root apt-get "${apt_options[@]}" install -y --no-install-recommends "${missing[@]}"
    fi
    [[ -d $BENCH_PEERS/node_modules/pm2 ]] ||
        step bench-pm2 "Peers: installing pm2." \
            npm install --prefix "$BENCH_PEERS" --no-audit --no-fund "pm2@$pm2_version"
}

run_groups() {
    local group status=0
    : >"$results"
    for group in "$@"; do
        say "Measuring: $group."
        "bench/$group/run.sh" "$results" || {
            status=1
            say "The group $group failed."
        }
    done
    return "$status"
}

[[ $(uname -s) == Linux ]] || die "The peers run on Linux only."
export BENCH_PEERS=$PWD/build/peers
export BENCH_ROUNDS=${BENCH_ROUNDS:-5} BENCH_IDLE_SECONDS=${BENCH_IDLE_SECONDS:-600}
install_peers
if [[ -z ${BENCH_BUILD-} ]]; then
    build bench
    BENCH_BUILD=build/bench
fi
BENCH_BUILD=$(realpath "$BENCH_BUILD")
export BENCH_BUILD
# What is made soon after a removal is slow, so large trees stay until all is measured.
export BENCH_TREES=$BENCH_BUILD/trees
trap 'rm -rf "$BENCH_TREES"' EXIT
mkdir -p "$BENCH_TREES"
readonly results=$BENCH_BUILD/results.jsonl
if (($# == 0)); then
    for script in bench/*/run.sh; do
        set -- "$@" "$(basename "$(dirname "$script")")"
    done
fi
status=0
run_groups "$@" || status=$?
node bench/report.js "$results"
exit "$status"
