# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# CTest names the cases that were skipped and keeps why to its log. Sourced by test.sh.

# with_skip_reasons LOG: hands the output of ctest on. Its summary comes last, after what LOG says about
# skipped cases.
with_skip_reasons() {
    awk -v log_file="$1" '
        /^ +Start +[0-9]+: / { next }
        /^[0-9]+% tests passed, / { inSummary = 1 }
        inSummary { summary = summary $0 "\n"; next }
        { print; fflush() }
        END {
            while ((getline line < log_file) > 0) {
                if (line ~ /^[0-9]+\/[0-9]+ Test: /) { name = line; sub(/^[^:]*: /, "", name) }
                if (isReason && line !~ /^$|^\[ /) reasons = reasons "Skipped " name ": " line "\n"
                isReason = line ~ /: Skipped$/ || (isReason && line !~ /^$|^\[ /)
            }
            if (summary != "" && reasons != "") printf "%s\n", reasons
            printf "%s", summary
        }'
}
