#!/usr/bin/env bash
# What colour management costs: the same render with and without a display transform and burn-ins, in turn, on frames of
# 1920 x 1080.
# Prints the wall time of each and the middle one of the ratios.
#
# Usage: colour.sh [ROUNDS]    (default: 5)
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd -P)
corvel=${CORVEL:-$root/build/release/Corvel.app/Contents/MacOS/corvel}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for frame in $(seq 1 24); do
    oiiotool --pattern noise:type=gaussian:mean=0.3:stddev=0.2:seed="$frame" 240x135 3 --resize 1920x1080 -d half \
        --compression zip -o "$work/a.$(printf %04d "$frame").exr"
done

# seconds OPTIONS…: wall time of one render.
seconds() {
    local begun ended
    begun=$(date +%s.%N)
    "$corvel" render "$work/a.####.exr" -o "$work/a.mov" -y --codec apch --progress none "$@" 2>/dev/null
    ended=$(date +%s.%N)
    echo "$ended - $begun" | bc -l
}

seconds >/dev/null
for ((round = 0; round < ${1:-5}; ++round)); do
    plain=$(seconds)
    managed=$(seconds --input-space ACEScg --display 'sRGB - Display' --view Filmic --burnin default)
    printf '%.2f s without, %.2f s with: %.3f\n' "$plain" "$managed" "$(echo "$managed / $plain" | bc -l)"
done | tee "$work/rounds"
printf 'middle: %s\n' "$(awk '{print $NF}' "$work/rounds" | sort -n | sed -n "$(((${1:-5} + 1) / 2))p")"
