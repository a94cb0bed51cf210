#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check_sources.sh BUILD [EXPRESSION]: has this machine's clang check the syntax and the types of every
# source of the build for macOS configured in BUILD, or of those whose paths match EXPRESSION, as far
# as the headers of this machine go. Names the sources with errors and fails.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly here build=$1 expression=${2-.}
work=$(mktemp -d)
readonly work
trap 'rm -rf "$work"' EXIT

# What is said to a compiler for macOS alone, the headers that are parsed before, and the output.
readonly for_macos='s/ -arch [^ ]+| -mmacosx-version-min=[^ ]+| -isysroot [^ ]+| -Winvalid-pch| -Xarch_[^ ]+ -include[^ ]+| -o [^ ]+ -c .*//g'

# The commands of the build, a line each: the source, a tab, the command without it.
commands() {
    local command source
    sed -n 's/^  "command": "\(.*\)",$/\1/p' "$build/compile_commands.json" | sed 's/\\\(.\)/\1/g' |
        while IFS= read -r command; do
            source=${command##* -c }
            if [[ $source != "$build"/* && $source =~ $expression ]]; then
                printf '%s\t%s\n' "$source" "$(sed -E "$for_macos" <<<"$command")"
            fi
        done
}

# compile COMMAND OPTION...: the command is a line of shell.
compile() {
    eval "$1 -fPIC" '"${@:2}"'
}

# check SOURCE<TAB>COMMAND
check() {
    local source=${1%%$'\t'*} view="-include-pch $work/view.pch"
    [[ $source != *.mm ]] || view="-include $here/mac_view.h -fobjc-runtime=macosx-13.0"
    compile "${1#*$'\t'} $view" -Werror -fsyntax-only "-I$here/../macos_declarations" "$source" ||
        printf '%s\n' "$source" >>"$work/failed"
}

commands >"$work/commands"
[[ -s $work/commands ]] || {
    echo "no source of the build matches $expression" >&2
    exit 1
}
first=$(grep -m 1 '\.cpp	' "$work/commands")
compile "${first#*$'\t'}" -w -x c++-header "$here/mac_view.h" -o "$work/view.pch"

running=0
while IFS= read -r line; do
    check "$line" &
    ((++running < $(nproc))) || {
        wait -n
        running=$((running - 1))
    }
done <"$work/commands"
wait
printf '%s sources checked\n' "$(wc -l <"$work/commands")"
[[ ! -e $work/failed ]] || {
    printf 'with errors: %s\n' "$(sort "$work/failed" | tr '\n' ' ')" >&2
    exit 1
}
