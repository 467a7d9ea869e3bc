#!/usr/bin/env bash
# Every test: installs the dependencies, builds the release tree and runs the whole
# suite, then builds the AddressSanitizer + UndefinedBehaviorSanitizer tree and runs the
# same suite again, and finally runs each fuzz target for HALVERN_FUZZ_SECONDS (60 by
# default) from its seed corpus. Set HALVERN_SKIP_ASAN=1 to run the release pass only,
# HALVERN_FUZZ_SECONDS=0 to skip fuzzing.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
jobs="$(nproc)"

cmake --preset release
cmake --build --preset release -j"$jobs"
ctest --preset release -j"$jobs"

if [ "${HALVERN_SKIP_ASAN:-0}" != "1" ]; then
    cmake --preset asan
    cmake --build --preset asan -j"$jobs"
    ctest --preset asan -j"$jobs"
fi

fuzz_seconds="${HALVERN_FUZZ_SECONDS:-60}"
if [ "$fuzz_seconds" != "0" ]; then
    cmake --preset fuzz
    cmake --build --preset fuzz -j"$jobs"
    for target in build/fuzz/*_fuzz; do
        name="$(basename "$target" _fuzz)"
        corpus="$(mktemp -d)"
        cp fuzz/corpus/"$name"/* "$corpus"/
        dictionary=()
        [ -f fuzz/"$name".dict ] && dictionary=(-dict=fuzz/"$name".dict)
        "$target" -max_total_time="$fuzz_seconds" -rss_limit_mb=4096 "${dictionary[@]}" "$corpus"
        rm -rf "$corpus"
    done
fi
