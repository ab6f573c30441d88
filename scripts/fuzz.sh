#!/usr/bin/env bash
# Fuzzes one target for a while.
#   scripts/fuzz.sh TARGET SECONDS [libFuzzer options...]
#   scripts/fuzz.sh list
# Configures and builds ./build-fuzz if needed (clang, AddressSanitizer +
# UBSan, KELCC_FUZZ=ON), then runs TARGET (fuzz_ycbcr, fuzz_repack, ...) for
# SECONDS on a working corpus outside the repository, seeded from
# fuzz/corpus/TARGET and kept between runs in ${KELCC_FUZZ_WORK:-/tmp/kelcc-fuzz}/TARGET.
# Prints the executions and any crash file; a crash file is the input to
# minimise (TARGET -minimize_crash=1 -runs=10000 FILE) and to add to
# fuzz/regressions/TARGET/.  KFZ_SKIP=name,name leaves members out of a run.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
if [ "${1:-}" = list ]; then
  ls fuzz/fuzz_*.cpp | sed 's|fuzz/||; s|\.cpp$||'
  exit 0
fi
if [ $# -lt 2 ]; then
  echo "usage: $0 TARGET SECONDS [libFuzzer options...] | $0 list" >&2
  exit 2
fi
target=$1 seconds=$2
shift 2
if [ ! -f "fuzz/$target.cpp" ]; then
  echo "no target $target; targets: $(ls fuzz/fuzz_*.cpp | sed 's|fuzz/||; s|\.cpp$||' | tr '\n' ' ')" >&2
  exit 2
fi
scripts/ensure-deps.sh fuzz
dir=build-fuzz
if [ ! -f "$dir/build.ninja" ]; then
  CC=clang CXX=clang++ cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DKELCC_SANITIZE=ON -DKELCC_FUZZ=ON -DKELCC_TESTS=OFF -DKELCC_BENCH=OFF -DKELCC_EXAMPLES=OFF >/dev/null
fi
cmake --build "$dir" --target "$target"
work=${KELCC_FUZZ_WORK:-/tmp/kelcc-fuzz}/$target
mkdir -p "$work/corpus" "$work/artifacts"
cp -n fuzz/corpus/"$target"/* "$work/corpus/" 2>/dev/null || true
export ASAN_OPTIONS=${ASAN_OPTIONS:-abort_on_error=1:detect_leaks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
# LLVM's OpenMP runtime frees its thread pool after the leak check.
export LSAN_OPTIONS=${LSAN_OPTIONS:-suppressions=$root/tests/lsan.supp}
export OMP_WAIT_POLICY=${OMP_WAIT_POLICY:-passive}
log=$work/last-run.log
set +e
"$root/$dir/fuzz/$target" -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=20 -print_final_stats=1 \
  -artifact_prefix="$work/artifacts/" "$@" "$work/corpus" 2>&1 | tee "$log" | grep -E '^(==|SUMMARY|.*runtime error|Done|stat::number_of_executed_units|artifact_prefix)'
status=${PIPESTATUS[0]}
set -e
echo "executions: $(grep -Eo 'stat::number_of_executed_units: *[0-9]+' "$log" | grep -Eo '[0-9]+$' || echo '?')"
echo "corpus: $(ls "$work/corpus" | wc -l) inputs in $work/corpus; log: $log"
crashes=$(ls "$work"/artifacts/ 2>/dev/null | sed "s|^|$work/artifacts/|")
if [ -n "$crashes" ]; then
  echo "crash files:"
  echo "$crashes"
fi
exit "$status"
