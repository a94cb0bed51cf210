# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# Reading property lists. Sourced.

schema=$(dirname "${BASH_SOURCE[0]}")/plist.rng
readonly schema
readonly doctype='<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">'

# read_plist FILE OPTION...: xmllint on FILE, without its reference to a schema that is not here.
read_plist() {
    local file=$1
    shift
    grep -vxF "$doctype" "$file" | xmllint --nonet "$@" -
}

# require_plist FILE: fails unless it is a property list whose keys differ.
require_plist() {
    local problems twice
    problems=$(grep -qxF "$doctype" "$1" && read_plist "$1" --noout --relaxng "$schema" 2>&1) || {
        printf '%s is no property list: %s\n' "$1" "${problems:-it does not say that it is one}" >&2
        return 1
    }
    twice=$(keys "$1" | sort | uniq -d)
    [[ -z $twice ]] || {
        printf '%s has a key twice: %s\n' "$1" "$twice" >&2
        return 1
    }
}

# keys FILE: those of the outermost dictionary, one a line.
keys() {
    read_plist "$1" --xpath '/plist/dict/key/text()' | grep .
}

# value FILE KEY: "true" or "false", or the text of a string; fails when KEY has no such value.
value() {
    local next="/plist/dict/key[.='$2']/following-sibling::*[1]"
    case $(read_plist "$1" --xpath "name($next)") in
    string) read_plist "$1" --xpath "string($next)" ;;
    true) echo true ;;
    false) echo false ;;
    *) return 1 ;;
    esac
}
