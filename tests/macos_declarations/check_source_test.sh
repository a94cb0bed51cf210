#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check_source_test.sh ROOT OPTION...: the check catches each kind of mistake.
set -euo pipefail
root=$1
shift
options=("$@")
check=$root/tests/macos_declarations/check_source.sh
copy=$(mktemp -d)
trap 'rm -rf "$copy"' EXIT
cp -rL "$root"/{base,platform} "$copy"

passes() {
    "$check" "$copy" "$1" "${options[@]}"
}

# What fails with a mistake must pass without.
for file in "$copy"/platform/macos/*.{cpp,mm}; do
    passes "${file#"$copy"/}"
done

# caught FILE OLD NEW: with OLD replaced by NEW in FILE the check must fail.
caught() {
    local file=platform/macos/$1 text
    text=$(<"$root/$file")
    if [[ $text != *"$2"* ]]; then
        echo "$file does not contain: $2"
        exit 1
    fi
    printf '%s\n' "${text/"$2"/"$3"}" >"$copy/$file"
    if passes "$file" >/dev/null 2>&1; then
        echo "not caught: $3 in $file"
        exit 1
    fi
    cp "$root/$file" "$copy/$file"
}

caught accessory.mm ']' '' # syntax
caught accessory.mm 'setActivationPolicy' 'setPolicy'
caught accessory.mm 'NSApplicationActivationPolicyAccessory' '@"accessory"'
caught browser.mm '@(text.constData())' 'text.constData()'
caught browser.mm 'openURL:address' 'openURL:address animated:YES'
caught browser.mm 'MacBrowser::open(' 'MacBrowser::show('
caught login_item.mm 'registerAndReturnError:&error' 'registerAndReturnError:error'
caught login_item.mm 'SMAppServiceStatusEnabled' 'SMAppServiceStatusOn'
caught login_item.mm 'static_cast<int>(error.code)' 'error.code' # narrows
caught desktop_services.cpp 'MacLoginItem>()' 'LinuxLoginItem>()'
caught desktop_services.cpp 'CommonCryptoContentDigest>()' 'LibcryptoContentDigest>()'
caught content_digest.cpp 'static_cast<CC_LONG>(size)' 'size' # narrows
caught content_digest.cpp 'CC_SHA256_DIGEST_LENGTH' 'CC_SHA256_LENGTH'
caught process_identity.cpp 'PROC_PIDTBSDINFO' 'PROC_PIDTBSINFO'
caught exit_watch.cpp 'EVFILT_PROC' 'EVFILT_PROCESS'
echo 'every mistake was caught'
