#!/usr/bin/env bash
# The main job: installs the dependencies, builds the release tree and renders the
# built-in test signal through the plug-in core, printing what the run measured.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset release
cmake --build --preset release -j"$(nproc)" --target halvern-render
mkdir -p out
build/release/halvern-render --out out/halvern-render.wav "$@"
