#!/usr/bin/env bash
# Whether every source is laid out as .clang-format says; shows what would change. With --fix it is changed.
set -euo pipefail

cd "$(dirname "$0")/.."
mapfile -d '' -t sources < <(git ls-files -z --cached --others --exclude-standard '*.h' '*.cpp' '*.mm' '*.c')
if [[ ${1:-} == --fix ]]; then
    clang-format-14 -i "${sources[@]}"
    exit
fi
wrong=0
for source in "${sources[@]}"; do
    [[ -e $source ]] || continue
    clang-format-14 "$source" | diff -u --label "$source" --label "$source, laid out" "$source" - || wrong=1
done
((wrong == 0)) && echo "${#sources[@]} sources are laid out well"
