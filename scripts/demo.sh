#!/usr/bin/env bash
# Builds the library and runs its main job on the built-in test chart:
# conversions there and back, images written to ./out, PSNR and timings printed.
# Then the kelcc tool (when libpng is there) converts the chart to y4m and back.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/ensure-deps.sh build
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build --target chart_demo
out=${1:-out}
build/examples/chart_demo "$out"
if cmake --build build --target kelcc >/dev/null 2>&1; then
  kelcc=build/tools/kelcc/kelcc
  echo "kelcc on the chart:"
  "$kelcc" convert "$out/chart.ppm" "$out/chart.y4m" --verbose
  "$kelcc" convert "$out/chart.y4m" "$out/chart-from-y4m.png" --verbose
  "$kelcc" dither "$out/chart.ppm" "$out/chart-poster.png" --levels 4 --method fs --verbose
  ls -l "$out/chart.y4m" "$out/chart-from-y4m.png" "$out/chart-poster.png"
fi
