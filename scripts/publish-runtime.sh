#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# publish-runtime.sh RUNTIME_DIR VERSION OUT_DIR: makes a runtime ready for release.
#
# RUNTIME_DIR holds local-server/ and node-runtime/node. OUT_DIR gets the archive and the manifest of
# its channel in the layout that trays look for; copy it to any static web server, archives first.
# An archive is named by its content: republishing a version, or two versions that would be spelt alike,
# never takes the archive from under a tray that has read the earlier manifest.
#
#   BASE_URL                 address at which OUT_DIR will be served, without a trailing slash
#   CHANNEL, PLATFORM, ARCH  default: beta, and those of this machine
#   MIN_RUNTIME_VERSION      trays with an older runtime must take this one before they start
#   NOTES_URL, REQUIRED_REASON
set -euo pipefail

die() {
    printf 'publish-runtime.sh: %s\n' "$*" >&2
    exit 1
}

if (($# != 3)); then
    sed -n '3,13s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2
    exit 2
fi
readonly runtime=$1 version=$2 out=$3
base_url=${BASE_URL:-https://downloads.orvanta.example/desktop-connector/runtime}
while [[ $base_url == */ ]]; do base_url=${base_url%/}; done
readonly base_url
readonly channel=${CHANNEL:-beta}

# The names that manifests use.
platform() {
    [[ $(uname -s) == Darwin ]] && echo macos || echo linux
}
arch() {
    case $(uname -m) in
    arm64 | aarch64) echo arm64 ;;
    amd64 | x86_64) echo x86_64 ;;
    *) uname -m ;;
    esac
}

require_complete_runtime() {
    local file
    for file in local-server node-runtime node-runtime/node; do
        [[ ! -L $runtime/$file ]] || die "$file is a link in $runtime; the archive would hold the link alone."
    done
    for file in server.js config.installer.json cloudflared views/project-list.html public/index3.html; do
        [[ -e $runtime/local-server/$file ]] || die "the runtime is incomplete: local-server/$file is missing in $runtime."
        [[ -f $runtime/local-server/$file ]] || die "local-server/$file is no file in $runtime."
    done
    [[ -f $runtime/node-runtime/node && -x $runtime/node-runtime/node ]] ||
        die "the runtime is incomplete: node-runtime/node is no executable file in $runtime."
}

# What trays would not unpack, or what would be something else on their machines.
require_plain_runtime() {
    local item
    while IFS= read -r -d '' item; do
        if [[ -L $item ]]; then
            require_inner_link "${item#"$runtime"/}" "$(readlink "$item" && printf x)"
        elif [[ ! -d $item && ! -f $item ]]; then
            die "${item#"$runtime"/} is no file, folder or link."
        fi
    done < <(find "$runtime/local-server" "$runtime/node-runtime" -print0)
}

# require_inner_link PATH TARGET: TARGET, with a newline and an x behind it, must climb only at its
# start and never above the runtime. Behind a name, ".." may lead anywhere: that may be a link.
require_inner_link() {
    local path=$1 target=${2%$'\n'x} part climbing=true
    local above=${path//[^\/]/}
    local depth=${#above}
    [[ $target != /* ]] || die "$path is a link to $target, which would be another one on other machines."
    while IFS= read -r -d / part; do
        case $part in
        '' | .) ;;
        ..)
            depth=$((depth - 1))
            if [[ $climbing == false ]] || ((depth < 0)); then
                die "$path is a link that can lead out of the runtime: $target."
            fi
            ;;
        *) climbing=false ;;
        esac
    done <<<"$target/"
}

sha256() {
    if command -v sha256sum >/dev/null; then
        sha256sum <"$1" | cut -d' ' -f1
    else
        shasum -a 256 <"$1" | cut -d' ' -f1
    fi
}

is_utf8() {
    iconv -f UTF-8 -t UTF-8 <<<"$1" >/dev/null 2>&1
}

# A JSON string; control characters have been refused before.
quoted() {
    local text=${1//\\/\\\\}
    printf '"%s"' "${text//\"/\\\"}"
}

# member NAME VALUE: a line of the manifest; nothing for an empty value.
member() {
    [[ -z $2 ]] || printf ',\n  "%s": %s' "$1" "$(quoted "$2")"
}

manifest() {
    printf '{\n  "version": %s' "$(quoted "$version")"
    member channel "$channel"
    member platform "$target_platform"
    member arch "$target_arch"
    member archiveUrl "$base_url/$folder/$archive"
    member sha256 "$1"
    member publishedAt "$(date -u +%Y-%m-%dT%H:%M:%SZ)"
    member notesUrl "${NOTES_URL:-}"
    member minRuntimeVersion "${MIN_RUNTIME_VERSION:-}"
    member requiredReason "${REQUIRED_REASON:-}"
    printf '\n}\n'
}

target_platform=${PLATFORM:-$(platform)}
target_arch=${ARCH:-$(arch)}
readonly target_platform target_arch
for text in "$version" "$base_url" "$channel" "${NOTES_URL:-}" "${MIN_RUNTIME_VERSION:-}" "${REQUIRED_REASON:-}"; do
    [[ $text != *[[:cntrl:]]* ]] || die "texts for the manifest must hold no control characters."
    is_utf8 "$text" || die "texts for the manifest must be UTF-8."
done
readonly web_address='^https?://(\[[0-9A-Fa-f:.]+\]|[^][/?#:@[:space:]]+)(:[0-9]+)?(/[^?#[:space:]]*)?$'
[[ $base_url =~ $web_address ]] || die "BASE_URL must be http:// or https://, a host and perhaps a path, not: $base_url"
case $version in
'' | . | ..) die "the version must be a text that can name a directory." ;;
esac
for name in "$channel" "$target_platform" "$target_arch"; do
    [[ $name != *[!A-Za-z0-9._-]* && $name != .* ]] ||
        die "channel, platform and processor name folders: letters, digits, '.', '_' and '-' only."
done
command -v bsdtar >/dev/null || die "bsdtar is missing; on Debian it is in libarchive-tools."
command -v iconv >/dev/null || die "iconv is missing."
require_complete_runtime
require_plain_runtime

readonly folder=$channel/$target_platform/$target_arch
mkdir -p "$out/$folder"
work=$(mktemp -d "$out/$folder/.publish.XXXXXX")
readonly work
trap 'rm -rf "$work"' EXIT

printf 'Packing %s.\n' "$runtime"
# In one folder: a tray moves that into place, while it copies what lies at the top.
# Else the bsdtar of macOS adds a file "._NAME" for each file with extended attributes.
COPYFILE_DISABLE=1 bsdtar -c -f "$work/archive" --format zip -s '|^|runtime/|S' -C "$runtime" \
    local-server node-runtime
digest=$(sha256 "$work/archive")
readonly digest
readonly archive=runtime-${version//[^A-Za-z0-9._-]/_}-${digest:0:16}.zip
manifest "$digest" >"$work/manifest.json"
# The manifest last: whoever reads it finds its archive.
chmod 644 "$work"/*
mv "$work/archive" "$out/$folder/$archive"
mv "$work/manifest.json" "$out/$folder/manifest.json"
printf 'Published %s: %s\n' "$version" "$out/$folder/manifest.json"
