#!/usr/bin/env bash
# shellcheck disable=SC2317  # xargs calls tidy
# clang-tidy over what the bundle is made of, with the checks of .clang-tidy; what changed last is looked at first. The
# build folder must be configured.
#
# Usage: check-tidy.sh [--minutes N] [PATTERN]
#
#   --minutes N   begin no further source after N minutes, and say how many were left out
#   PATTERN       only the sources whose path matches this extended regular expression
#
# Exits with 0 when there were no findings, 1 when there were, 2 when nothing was looked at.
set -euo pipefail

cd "$(dirname "$0")/.."
export build=build/release deadline=
folders=(desktop filesystem host platform processbridge property quicktime timecode worker writer)
if [[ ${1:-} == --minutes ]]; then
    deadline=$(($(date +%s) + ${2:?"check-tidy: say how many minutes"} * 60))
    shift 2
fi
if [[ ! -e $build/compile_commands.json ]]; then
    echo "check-tidy: $build is not configured; run: cmake --preset release" >&2
    exit 2
fi

# The build has no commands for other systems' sources.
mapfile -t sources < <(git log --format= --name-only -- "${folders[@]}" | awk '/\.cpp$/ && !seen[$0]++' |
    grep -E -- "${1:-.}" | while read -r source; do
    grep -qF "\"file\": \"$PWD/$source\"" "$build/compile_commands.json" && printf '%s\n' "$source"
done)
if ((${#sources[@]} == 0)); then
    echo "check-tidy: no source's path matches '${1:-}'" >&2
    exit 2
fi

export logs
logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT

# tidy SOURCE: leaves a log named after the source, and another when there were findings.
tidy() {
    [[ -n $deadline ]] && (($(date +%s) >= deadline)) && return
    local log=$logs/${1//\//,}
    # The build folder is configured for g++, which has warnings that clang does not know.
    clang-tidy-14 -quiet -p "$build" -extra-arg=-Wno-unknown-warning-option "$1" >"$log.log" 2>"$log.err" && return
    # When it could not even begin, what it said instead.
    [[ -s $log.log ]] || cp "$log.err" "$log.log"
    mv "$log.log" "$log.findings"
}
export -f tidy
printf '%s\n' "${sources[@]}" | xargs -P "$(nproc)" -I{} bash -c 'tidy {}'

seen=$(find "$logs" -name '*.err' | wc -l)
left=$((${#sources[@]} - seen))
if compgen -G "$logs/*.findings" >/dev/null; then
    cat "$logs"/*.findings
    verdict="findings in $(find "$logs" -name '*.findings' | wc -l) of $seen sources"
    outcome=1
else
    verdict="clang-tidy has nothing to say about $seen sources"
    outcome=0
fi
((left > 0)) && verdict+="; time was up for $left, which were changed longer ago"
echo "$verdict"
exit "$outcome"
