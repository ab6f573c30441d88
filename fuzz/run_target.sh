#!/usr/bin/env bash
# Runs a fuzz target for the test suite.
#   run_target.sh fuzz TARGET CORPUS WORKDIR SECONDS
#       fuzzes for SECONDS over a copy of CORPUS made in WORKDIR
#   run_target.sh replay TARGET DIR
#       runs every input in DIR once (no fuzzing); an empty DIR passes
set -euo pipefail
export ASAN_OPTIONS=${ASAN_OPTIONS:-abort_on_error=1:detect_leaks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
# LLVM's OpenMP runtime frees its thread pool after the leak check.
export LSAN_OPTIONS=${LSAN_OPTIONS:-suppressions=$(dirname "$0")/../tests/lsan.supp}
case ${1:-} in
  fuzz)
    target=$2 corpus=$3 work=$4 seconds=$5
    rm -rf "$work"
    mkdir -p "$work/corpus" "$work/artifacts"
    cp -r "$corpus"/. "$work/corpus/" 2>/dev/null || true
    exec "$target" -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=20 -print_final_stats=1 \
      -artifact_prefix="$work/artifacts/" "$work/corpus"
    ;;
  replay)
    target=$2 dir=$3
    shopt -s nullglob
    inputs=("$dir"/*)
    if [ ${#inputs[@]} -eq 0 ]; then
      echo "no inputs in $dir"
      exit 0
    fi
    exec "$target" -rss_limit_mb=2048 -timeout=60 "${inputs[@]}"
    ;;
  *) echo "usage: $0 fuzz TARGET CORPUS WORKDIR SECONDS | replay TARGET DIR" >&2; exit 2 ;;
esac
