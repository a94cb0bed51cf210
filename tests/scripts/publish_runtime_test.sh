#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# publish_runtime_test.sh ROOT: what publish-runtime.sh makes, and what it refuses without leaving
# anything behind.
set -euo pipefail
root=$1
publish=$root/scripts/publish-runtime.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
readonly root publish work runtime=$work/runtime out=$work/out base_url=https://downloads.test/runtime
readonly required=(local-server/server.js local-server/config.installer.json local-server/cloudflared
    local-server/views/project-list.html local-server/public/index3.html node-runtime/node)
readonly folder=$out/beta/linux/x86_64
export PLATFORM=linux ARCH=x86_64 BASE_URL=$base_url
unset CHANNEL MIN_RUNTIME_VERSION NOTES_URL REQUIRED_REASON

fail() {
    printf 'failed: %s\n' "$*" >&2
    exit 1
}

fresh_runtime() {
    local file
    rm -rf "$runtime" "$out"
    for file in "${required[@]}"; do
        mkdir -p "$(dirname "$runtime/$file")"
        printf 'content of %s\n' "$file" >"$runtime/$file"
    done
    chmod +x "$runtime/node-runtime/node"
}

# refused STATUS TEXT COMMAND...: ends with STATUS, says TEXT on standard error, makes nothing.
refused() {
    local status=0 expected=$1 text=$2
    shift 2
    "$@" >"$work/said" 2>"$work/complaint" || status=$?
    ((status == expected)) || fail "status $status instead of $expected of: $*"
    grep -qF -- "$text" "$work/complaint" || fail "no \"$text\" in: $(cat "$work/complaint")"
    [[ ! -s $work/said && ! -e $out ]] || fail "not refused altogether: $*"
}

# published VERSION: publishes the runtime and prints the path of its archive, as the manifest names it.
published() {
    "$publish" "$runtime" "$1" "$out" >/dev/null || fail "could not publish $1"
    local url
    url=$(member archiveUrl)
    [[ $url == "$base_url"/* ]] || fail "$url is not below $base_url"
    [[ ${url#"$base_url/"} != *[!A-Za-z0-9._/-]* ]] || fail "$url needs escaping"
    printf '%s\n' "$out/${url#"$base_url/"}"
}

member() {
    node -p 'JSON.parse(fs.readFileSync(process.argv[1], "utf8"))[process.argv[2]]' "$folder/manifest.json" "$1"
}

digest_of() {
    openssl dgst -sha256 -r "$1" | cut -d' ' -f1
}

refuses_bad_usage() {
    fresh_runtime
    refused 2 'publish-runtime.sh RUNTIME_DIR VERSION OUT_DIR' "$publish"
    refused 2 'MIN_RUNTIME_VERSION' "$publish" "$runtime" 1.0.0
    refused 2 'NOTES_URL' "$publish" "$runtime" 1.0.0 "$out" more
}

refuses_bad_names() {
    local version channel
    fresh_runtime
    for version in '' . ..; do
        refused 1 'can name a directory' "$publish" "$runtime" "$version" "$out"
    done
    for version in $'1.0\n0' $'1.0\t' $'\x7f' $'\x01'; do
        refused 1 'no control characters' "$publish" "$runtime" "$version" "$out"
    done
    refused 1 'no control characters' env REQUIRED_REASON=$'two\nlines' "$publish" "$runtime" 1.0.0 "$out"
    for channel in .. a/b 'a b' 'a%2f' .hidden; do
        refused 1 'name folders' env CHANNEL="$channel" "$publish" "$runtime" 1.0.0 "$out"
    done
}

refuses_incomplete_runtimes() {
    local file
    for file in "${required[@]}"; do
        fresh_runtime
        rm "$runtime/$file"
        refused 1 "$file" "$publish" "$runtime" 1.0.0 "$out"
    done
    fresh_runtime
    chmod -x "$runtime/node-runtime/node"
    refused 1 'node-runtime/node is no executable file' "$publish" "$runtime" 1.0.0 "$out"
    fresh_runtime
    mv "$runtime/node-runtime/node" "$work/elsewhere"
    ln -s "$work/elsewhere" "$runtime/node-runtime/node"
    refused 1 'node-runtime/node is a link' "$publish" "$runtime" 1.0.0 "$out"
}

refuses_required_files_that_are_none() {
    local file
    for file in "${required[@]}"; do
        fresh_runtime
        rm "$runtime/$file"
        mkdir "$runtime/$file"
        refused 1 "$file is no" "$publish" "$runtime" 1.0.0 "$out"
    done
}

refuses_links_that_lead_out() {
    local link target
    for link in 'local-server/l /etc/hostname' 'local-server/l /' 'local-server/l ../..' \
        'local-server/views/l ../../../x' 'local-server/l views/../..' 'local-server/l ../../runtime/node-runtime' \
        'local-server/cloudflared /etc/hostname'; do
        target=${link#* }
        link=${link%% *}
        fresh_runtime
        ln -sf "$target" "$runtime/$link"
        refused 1 "$link is a link" "$publish" "$runtime" 1.0.0 "$out"
    done
    fresh_runtime
    ln -s $'views\n/../..' "$runtime/local-server/l"
    refused 1 'can lead out of the runtime' "$publish" "$runtime" 1.0.0 "$out"
}

accepts_links_that_stay_inside() {
    local archive
    fresh_runtime
    ln -s ../node-runtime/node "$runtime/local-server/node"
    ln -s ../.././local-server//views "$runtime/local-server/public/views"
    mv "$runtime/local-server/cloudflared" "$runtime/node-runtime/tunnel"
    ln -s ../node-runtime/tunnel "$runtime/local-server/cloudflared"
    archive=$(published 1.0.0)
    bsdtar -t -f "$archive" | grep -qx runtime/local-server/cloudflared || fail 'a link is missing'
}

refuses_what_is_no_file_folder_or_link() {
    fresh_runtime
    mkfifo "$runtime/local-server/public/pipe"
    refused 1 'local-server/public/pipe is no file, folder or link' "$publish" "$runtime" 1.0.0 "$out"
    fresh_runtime
    # Killed, because it would remove its socket at any other end.
    (node -e 'require("net").createServer().listen(process.argv[1], () => process.kill(process.pid, "SIGKILL"))' \
        "$runtime/node-runtime/s" || true) 2>/dev/null
    [[ -S $runtime/node-runtime/s ]] || fail 'no socket'
    refused 1 'node-runtime/s is no file, folder or link' "$publish" "$runtime" 1.0.0 "$out"
}

refuses_addresses_that_trays_cannot_ask() {
    local address
    fresh_runtime
    for address in downloads.test ftp://downloads.test file:///srv / http:// http:///runtime https://:80 \
        'http://a b' 'http://a.test/?x' 'http://a.test/#x' http://a.test:x https://user@a.test; do
        refused 1 'BASE_URL must be' env BASE_URL="$address" "$publish" "$runtime" 1.0.0 "$out"
    done
    for address in http://127.0.0.1:8700 'http://[::1]:8700' https://a.test/b%20c//; do
        rm -rf "$out"
        BASE_URL=$address "$publish" "$runtime" 1.0.0 "$out" >/dev/null || fail "$address was refused"
    done
}

refuses_texts_that_are_not_utf_8() {
    fresh_runtime
    refused 1 'must be UTF-8' "$publish" "$runtime" $'1.0-\xff' "$out"
    refused 1 'must be UTF-8' env NOTES_URL=$'https://a.test/\xc3' "$publish" "$runtime" 1.0.0 "$out"
    refused 1 'must be UTF-8' env REQUIRED_REASON=$'\xed\xa0\x80' "$publish" "$runtime" 1.0.0 "$out"
    refused 1 'must be UTF-8' env MIN_RUNTIME_VERSION=$'\xc0\xaf' "$publish" "$runtime" 1.0.0 "$out"
    published '1.0-ü☃' >/dev/null
    [[ $(member version) == '1.0-ü☃' ]] || fail "version $(member version)"
}

publishes_what_trays_read() {
    local archive
    fresh_runtime
    export CHANNEL=beta NOTES_URL='https://notes.test/"1"' MIN_RUNTIME_VERSION=0.9 REQUIRED_REASON='a\b'
    archive=$(published 'release/1.2:3 "x"\y')
    [[ $(member version) == 'release/1.2:3 "x"\y' ]] || fail "version $(member version)"
    [[ $(member channel),$(member platform),$(member arch) == beta,linux,x86_64 ]] || fail 'target'
    [[ $(member notesUrl) == "$NOTES_URL" && $(member minRuntimeVersion) == 0.9 ]] || fail 'notes or minimum'
    [[ $(member requiredReason) == 'a\b' ]] || fail "reason $(member requiredReason)"
    [[ $(member sha256) == "$(digest_of "$archive")" ]] || fail 'digest'
    unset CHANNEL NOTES_URL MIN_RUNTIME_VERSION REQUIRED_REASON
    mkdir "$work/extracted"
    bsdtar -x -f "$archive" -C "$work/extracted"
    diff -r "$runtime" "$work/extracted/runtime" || fail 'the archive differs from the runtime'
    [[ -x $work/extracted/runtime/node-runtime/node ]] || fail 'node lost its mode'
    [[ $(find "$folder" -mindepth 1 | wc -l) == 2 ]] || fail "left behind: $(ls -A "$folder")"
}

# Whatever manifest a tray has read, its archive is still there with the digest it was told.
never_changes_an_archive() {
    local version archive digest archives=() digests=()
    fresh_runtime
    for version in 1.0+a '1.0%a' 1.0/a 1.0:a 1.0+a; do
        printf '%s\n' "$version, archive ${#archives[@]}" >"$runtime/local-server/server.js"
        archive=$(published "$version")
        digest=$(member sha256)
        archives+=("$archive")
        digests+=("$digest")
    done
    for index in "${!archives[@]}"; do
        [[ $(digest_of "${archives[index]}") == "${digests[index]}" ]] || fail "changed: ${archives[index]}"
    done
    [[ $(printf '%s\n' "${archives[@]}" | sort -u | wc -l) == 5 ]] || fail 'archives with the same name'
}

for check in refuses_bad_usage refuses_bad_names refuses_incomplete_runtimes refuses_required_files_that_are_none \
    refuses_links_that_lead_out accepts_links_that_stay_inside refuses_what_is_no_file_folder_or_link \
    refuses_addresses_that_trays_cannot_ask refuses_texts_that_are_not_utf_8 publishes_what_trays_read \
    never_changes_an_archive; do
    printf '%s\n' "$check"
    "$check"
done
