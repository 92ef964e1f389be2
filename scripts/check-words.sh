#!/usr/bin/env bash
# Looks through the tracked files for what must not be left in them. Prints each place and fails when there is one.
#
# Usage: check-words.sh [ROOT]
set -uo pipefail

cd "${1:-$(dirname "$0")/..}" || exit 2
found=0

# look WHAT PATTERN PATHSPEC…: one Perl pattern over the files of the path specification.
look() {
    local what=$1 pattern=$2 places
    shift 2
    places=$(git grep -InP --untracked -e "$pattern" -- "$@" ':!scripts/check-words.sh' ':!tests/unit/scripts')
    if [[ -n $places ]]; then
        printf '%s:\n%s\n\n' "$what" "$places"
        found=1
    fi
}

sources=('*.h' '*.cpp' '*.mm' '*.c')
texts=("${sources[@]}" '*.md' '*.txt' '*.cmake' '*.py' '*.sh' '*.json' '*.in' corvel test .ci)

look 'unfinished work' '\b(TODO|FIXME|XXX|HACK|TBD)\b' "${texts[@]}"
look 'work done inside assert' '\bassert\s*\(.*(\+\+|--|[^=!<>]=[^=])' "${sources[@]}"
look 'names of a whole namespace taken in' '^\s*using\s+namespace\s+(std|boost)\s*;' "${sources[@]}"
look 'headers and calls that the older of our compilers do not have' \
    '#include <(ranges|format|expected|print)>|std::(format|ranges|views)\b' "${sources[@]}"
look 'unsafe calls' '\b(sprintf|strcpy|strcat|gets|tmpnam|mktemp)\s*\(' "${sources[@]}"
look 'folders of one machine' '(^|[^\w./])/(work|root|home|Users)/' "${texts[@]}"
look 'marks of a merge' '^(<{7}|={7}|>{7})( |$)' "${texts[@]}"
look 'tabs or blanks at the end of a line' '[ \t]+$' "${texts[@]}"
look 'tabs' '\t' "${sources[@]}"
look 'line ends of another system' '\r$' "${texts[@]}"

if ((found)); then
    exit 1
fi
echo "nothing left over"
