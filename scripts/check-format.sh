#!/usr/bin/env bash
# Whether every source is laid out as .clang-format says. With --fix it is made so.
set -euo pipefail

cd "$(dirname "$0")/.."
mode=(--dry-run --Werror)
[[ ${1:-} == --fix ]] && mode=(-i)
git ls-files -z --cached --others --exclude-standard '*.h' '*.cpp' '*.mm' '*.c' |
    xargs -0 --no-run-if-empty clang-format-14 "${mode[@]}"
