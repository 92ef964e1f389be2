#!/usr/bin/env bash
# clang-tidy over what the bundle is made of, with the checks of .clang-tidy. The build folder must be configured.
#
# Usage: check-tidy.sh [PATTERN]    only the sources whose path matches the pattern
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd -P)
folders='(desktop|filesystem|host|platform|processbridge|property|quicktime|timecode|worker|writer)'
log=$(mktemp)
trap 'rm -f "$log"' EXIT

# The build folder is configured for g++, which has warnings that clang does not know.
if run-clang-tidy-14 -quiet -p "$root/build/release" -j "$(nproc)" -extra-arg=-Wno-unknown-warning-option \
    "^$root/(?=$folders/).*(?:${1:-})" >"$log" 2>&1; then
    sources=$(grep -c '^clang-tidy' "$log" || true)
    if ((sources == 0)); then
        echo "check-tidy: no source's path matches '${1:-}'" >&2
        exit 2
    fi
    echo "clang-tidy has nothing to say about $sources sources"
else
    # The findings alone: not the command lines, not the counts of what was filtered.
    grep -vE '^(clang-tidy|\[[0-9]+/[0-9]+\]|[0-9]+ warnings? |Suppressed|Use -header-filter)' "$log" | awk 'NF'
    exit 1
fi
