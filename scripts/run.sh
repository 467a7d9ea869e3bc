#!/usr/bin/env bash
# The main job: installs the dependencies, builds the release tree and renders the
# built-in test signal through the plug-in library, loaded by its VST 2.4 entry point as
# a host loads it, printing what the run measured.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset release
cmake --build --preset release -j"$(nproc)" --target halvern-render Halvern
mkdir -p out
build/release/halvern-render --plugin build/release/Halvern.so --out out/halvern-render.wav "$@"
