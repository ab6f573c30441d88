#!/usr/bin/env bash
# Builds the library and its tests and runs the whole suite.
#   scripts/test.sh             release build in ./build
#   scripts/test.sh --sanitize  AddressSanitizer + UBSan build (clang) in ./build-sanitize:
#                               the suite, then a short run of every fuzz target
#                               and the replay of past findings
#   scripts/test.sh --scalar    the reference kernels alone, no SIMD, in ./build-scalar
#   scripts/test.sh --tsan      ThreadSanitizer (clang, LLVM's OpenMP runtime and
#                               its Archer tool) in ./build-tsan: the tests of the
#                               threaded families, the host-thread and the
#                               allocation-failure tests (label "tsan")
set -euo pipefail
cd "$(dirname "$0")/.."
job=test
dir=build
flags=(-DCMAKE_BUILD_TYPE=Release -DKELCC_TESTS=ON)
targets=()
select=(-LE long)
case "${1:-}" in
  "") ;;
  --sanitize)
    job=sanitize
    dir=build-sanitize
    flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
           -DKELCC_SANITIZE=ON -DKELCC_FUZZ=ON -DKELCC_TESTS=ON -DKELCC_BENCH=OFF)
    export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
    export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
    export LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp
    ;;
  --scalar)
    dir=build-scalar
    flags=(-DCMAKE_BUILD_TYPE=Release -DKELCC_SIMD_TARGETS=scalar -DKELCC_TESTS=ON -DKELCC_BENCH=OFF)
    ;;
  --tsan)
    job=tsan
    dir=build-tsan
    flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
           -DKELCC_TSAN=ON -DKELCC_TESTS=ON -DKELCC_BENCH=OFF -DKELCC_EXAMPLES=OFF -DKELCC_TOOL=OFF)
    targets=(--target kelcc_tsan_tests kelcc_tsan_internal_tests)
    select=(-L tsan)
    ;;
  *) echo "usage: $0 [--sanitize | --scalar | --tsan]" >&2; exit 2 ;;
esac
scripts/ensure-deps.sh "$job"
cmake -S . -B "$dir" -G Ninja "${flags[@]}" >/dev/null
cmake --build "$dir" "${targets[@]}"
if [ "$job" = tsan ]; then
  # GCC's OpenMP runtime is not instrumented: nothing may bring it in.
  for binary in "$dir"/libkelccpx.so "$dir"/libkelcore.so "$dir"/tests/kelcc_tsan_tests "$dir"/tests/kelcc_tsan_internal_tests; do
    if ldd "$binary" | grep -q libgomp; then
      echo "$binary links libgomp; the TSan build needs LLVM's libomp alone" >&2
      exit 1
    fi
  done
fi
# The long sweeps (label "long") run by hand: ctest --test-dir build -L long
ctest --test-dir "$dir" --output-on-failure "${select[@]}" -j "$(nproc)"
