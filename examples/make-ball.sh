#!/usr/bin/env bash
# Renders examples/ball again. The files in it are committed; this is how they were made.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# -ffp-contract=off: the same roundings whatever the processor.
read -ra libraries <<< "$(pkg-config --cflags --libs OpenImageIO fmt)"
g++ -std=c++20 -O2 -ffp-contract=off "$here/MakeBall.cpp" -o "$work/MakeBall" "${libraries[@]}"
mkdir -p "$here/ball"
"$work/MakeBall" "$here/ball"
du -sh "$here/ball"
