#!/usr/bin/env bash
# Draws the pictures of the documentation again: images/*.svg from the .dot files beside this script (Graphviz), and
# images/ball.png from the example sequence (OpenImageIO's tools). The pictures are committed.
set -euo pipefail

cd "$(dirname "$0")"
for source in *.dot; do
    dot -Tsvg "$source" -o "images/${source%.dot}.svg"
done

# Every eighth frame in one picture, as if a flash had fired three times a second.
frames=()
for frame in $(seq 1001 8 1048) 1048; do
    frames+=("../examples/ball/ball.$frame.exr")
    ((${#frames[@]} > 1)) && frames+=(--over)
done
oiiotool "${frames[@]}" \
    --pattern checker:width=20:height=20:color1=.62,.62,.62,1:color2=.72,.72,.72,1 640x360 4 --over \
    --ch R,G,B --colorconvert linear sRGB -d uint8 -o images/ball.png
