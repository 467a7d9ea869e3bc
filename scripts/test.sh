#!/usr/bin/env bash
# Every test: installs the dependencies, builds the release tree and runs the whole
# suite, then builds the AddressSanitizer + UndefinedBehaviorSanitizer tree and runs the
# same suite again. Set HALVERN_SKIP_ASAN=1 to run the release pass only.
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
