#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# make-runtime.sh VERSION OUT_DIR [--never-healthy]: makes the demo connector a runtime to publish.
#
# OUT_DIR gets local-server/ and node-runtime/node. With --never-healthy the connector exits as soon
# as it is started, so that a tray rolls back.
#
#   NODE   the executable to take; default: that of node on PATH
set -euo pipefail

usage() {
    sed -n '3,8s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2
    exit 2
}

(($# == 2)) || [[ $# == 3 && $3 == --never-healthy ]] || usage
[[ -n $1 && -n $2 ]] || usage
readonly version=$1 out=$2 health=${3-}
demo=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly demo

# Arguments: VERSION. What the store keeps about a runtime, in the names that manifests use.
readonly metadata='
const platforms = { darwin: "macos" }, processors = { x64: "x86_64" };
console.log(JSON.stringify({
  version: process.argv[1],
  platform: platforms[process.platform] || process.platform,
  arch: processors[process.arch] || process.arch,
}, null, 2));'

mkdir -p "$out/node-runtime"
# Removed first: a file deleted in the sources must not live on, and a running node cannot be written.
rm -rf "$out/local-server" "$out/node-runtime/node"
cp -R "$demo/local-server" "$out/local-server"
node -e "$metadata" -- "$version" >"$out/local-server/runtime.json"
# What is on PATH may be a wrapper of a version manager.
cp "${NODE:-$(node -p process.execPath)}" "$out/node-runtime/node"
if [[ $health == --never-healthy ]]; then
    printf '%s\n' 'process.exit(3);' >"$out/local-server/server.js"
fi
printf 'Made %s: %s\n' "$version" "$out"
