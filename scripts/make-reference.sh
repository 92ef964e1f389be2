#!/usr/bin/env bash
# Makes the API reference from the headers' comments, build/reference/html/index.html. Fails when Doxygen has anything
# to complain of.
set -euo pipefail

cd "$(dirname "$0")/.."
mkdir -p build/reference
if ! doxygen docs/Doxyfile >build/reference/warnings.log 2>&1; then
    sort -u build/reference/warnings.log
    exit 1
fi
echo "$PWD/build/reference/html/index.html"
