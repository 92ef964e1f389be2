#!/usr/bin/env bash
# Whole renders beside ffmpeg: the same frames, the same codec, the same quality, runs alternated.
#
# Builds corvel and the program that makes the frames, then hands over to compare.py; its options are shown by
# `benches/compare.sh --help`. Frames are made once and kept under build/benches.
#
# `benches/compare.sh --reading` compares the reading of movies instead; see reading.py.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd -P)
work=$root/build/benches
mkdir -p "$work"

"$root/corvel" --version >/dev/null
if [[ ${1:-} == --reading ]]; then
    build=$root/build/release
    cmake -S "$root" -B "$build" -DCORVEL_BENCHES=ON >/dev/null
    cmake --build "$build" --target read_movie seek_movie >/dev/null
    exec python3 "$root/benches/reading.py" --work "$work" --build "$build" "${@:2}"
fi
if [[ $root/benches/MakeSequence.cpp -nt $work/MakeSequence ]]; then
    read -ra libraries <<<"$(pkg-config --cflags --libs OpenImageIO fmt)"
    g++ -std=c++20 -O2 "$root/benches/MakeSequence.cpp" -o "$work/MakeSequence" -pthread "${libraries[@]}"
    # Other frames than before: the ones that are kept are no longer what the program makes.
    rm -rf "$work/frames"
fi
exec python3 "$root/benches/compare.py" --work "$work" \
    --corvel "$root/build/release/Corvel.app/Contents/MacOS/corvel" "$@"
