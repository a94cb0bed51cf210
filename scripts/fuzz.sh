#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# fuzz.sh [--seconds N] [TARGET...]: runs every fuzzer, or those named, for N seconds each (30) and says
# how many inputs it has tried; fails when one of them finds something.
#   --executions N   until it has tried N inputs, however long that takes
#   --jobs N         so many fuzzers at a time (1)
# What a fuzzer learns is kept in build/fuzz/corpus and used by the next run; an input that breaks
# something is kept in build/fuzz/found. BUILD names another build directory than build/fuzz.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/setup.sh
source scripts/setup.sh

readonly build=${BUILD:-build/fuzz}
bound=-max_total_time=30
bound_text="for 30 seconds"
jobs=1

usage() {
    sed -n '3,8s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2
    exit 2
}

is_number() {
    [[ ${1-} =~ ^[1-9][0-9]*$ ]] || usage
}

targets=()
while (($# > 0)); do
    case $1 in
    --seconds) is_number "${2-}" && bound=-max_total_time=$2 && bound_text="for $2 seconds" && shift ;;
    --executions) is_number "${2-}" && bound=-runs=$2 && bound_text="until $2 executions" && shift ;;
    --jobs) is_number "${2-}" && jobs=$2 && shift ;;
    -*) usage ;;
    *)
        [[ -f tests/fuzz/$1_fuzzer.cpp ]] || die "There is no fuzzer $1."
        targets+=("$1")
        ;;
    esac
    shift
done
if ((${#targets[@]} == 0)); then
    mapfile -t targets < <(cd tests/fuzz && printf '%s\n' *_fuzzer.cpp | sed 's/_fuzzer\.cpp$//')
fi

# How long inputs get. Those that cost more than their length is worth are kept short.
longest_input() {
    case $1 in
    version_ordering) echo 64 ;;
    host_control_request | output_chunks | terminal_commands) echo 160 ;;
    *) echo 384 ;;
    esac
}

# A third more inputs in the same time; a found one is shown again without these.
export ASAN_OPTIONS=malloc_context_size=0:quarantine_size_mb=8

# fuzz TARGET: one line about the run. What it said is in the log of its name.
fuzz() {
    local target=$1 status=0 log=$logs/fuzz-$1.log executions
    mkdir -p "$build/corpus/$target" "$build/found" "$logs"
    "$build/tests/fuzz/${target}_fuzzer" "$bound" -print_final_stats=1 \
        -max_len="$(longest_input "$target")" -timeout=10 \
        -dict="tests/fuzz/dictionaries/$target.dict" -artifact_prefix="$build/found/$target-" \
        "$build/corpus/$target" "tests/fuzz/corpus/$target" >"$log" 2>&1 </dev/null || status=$?
    executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    if ((status == 0)); then
        say "$target: ${executions:-0} executions, nothing found."
    else
        say "$target: ${executions:-0} executions, then it failed (status $status; $log)."
        grep -E '^Broken: |SUMMARY: |runtime error: |Test unit written to ' "$log" || tail -n 20 "$log"
    fi
    ((status == 0 && ${executions:-0} > 0))
}

if [[ $build == build/fuzz ]]; then
    build fuzz
fi
say "Fuzzing ${#targets[@]} targets, each $bound_text."
export build bound logs
export -f fuzz longest_input say
printf '%s\n' "${targets[@]}" | xargs -P "$jobs" -I '{}' bash -euo pipefail -c 'fuzz {}' ||
    die "Something was found. $build/tests/fuzz/TARGET_fuzzer FILE shows it again."
