#!/usr/bin/env bash
# Builds the library and its tests and runs the whole suite.
#   scripts/test.sh             release build in ./build
#   scripts/test.sh --sanitize  AddressSanitizer + UBSan build in ./build-sanitize
#   scripts/test.sh --scalar    the reference kernels alone, no SIMD, in ./build-scalar
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/ensure-deps.sh test
dir=build
flags=(-DCMAKE_BUILD_TYPE=Release -DKELCC_TESTS=ON)
case "${1:-}" in
  "") ;;
  --sanitize)
    dir=build-sanitize
    flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DKELCC_SANITIZE=ON -DKELCC_TESTS=ON -DKELCC_BENCH=OFF)
    export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
    export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
    ;;
  --scalar)
    dir=build-scalar
    flags=(-DCMAKE_BUILD_TYPE=Release -DKELCC_SIMD_TARGETS=scalar -DKELCC_TESTS=ON -DKELCC_BENCH=OFF)
    ;;
  *) echo "usage: $0 [--sanitize | --scalar]" >&2; exit 2 ;;
esac
cmake -S . -B "$dir" -G Ninja "${flags[@]}" >/dev/null
cmake --build "$dir"
ctest --test-dir "$dir" --output-on-failure -j "$(nproc)" -LE long
