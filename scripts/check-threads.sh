#!/usr/bin/env bash
# Runs tests under the thread sanitizer: all unit tests, and the integration tests of the worker's threads. Whatever it
# finds is a failure, but for what tests/thread-suppressions.txt gives a reason for.
#
# Usage: check-threads.sh [CTEST-OPTION]…    check-threads.sh -R Presenter
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd -P)
build=$root/build/tsan
reports=$build/reports
folders=(tests/unit tests/integration/worker_read tests/integration/worker_write tests/integration/movie_file
    tests/integration/video_output tests/integration/recorded_render)

cd "$root"
cmake --preset tsan >/dev/null
ninja -C "$build" corvel CorvelQuickTimeHelper-32 movWriter corvel-movie "${folders[@]/%//all}"
rm -rf "$reports" && mkdir -p "$reports"
# The sanitizer loads libraries in the programs' place, and does not know where those look for them.
export LD_LIBRARY_PATH=$build/Corvel.app/Contents/Frameworks
export TSAN_OPTIONS="suppressions=$root/tests/thread-suppressions.txt:log_path=$reports/report:die_after_fork=0:allocator_may_return_null=1"
# Left out: what is of the environment set above.
leftOut='ConfinementTest.IsInForce|PluginFile.FindsTheLibrary'
failed=0
for folder in "${folders[@]}"; do
    # A confined worker could not write down what was found; the unit tests are of confinement, too.
    [[ $folder == tests/unit ]] || export CORVEL_HELPER_CONFINEMENT=off
    ctest --test-dir "$build/$folder" --output-on-failure --parallel "$(nproc)" -E "$leftOut" "$@" || failed=1
done
if [[ -n $(ls -A "$reports") ]]; then
    cat "$reports"/*
    failed=1
fi
exit "$failed"
