#!/usr/bin/env bash
# Builds the library and runs its main job on the built-in test chart:
# conversions there and back, images written to ./out, PSNR and timings printed.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/ensure-deps.sh build
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build --target chart_demo
build/examples/chart_demo "${1:-out}"
