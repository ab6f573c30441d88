#!/usr/bin/env bash
# Compares the dynamic symbols a shared library defines with the names its
# public header declares (every declaration starts with KEL_API).
set -euo pipefail
lib=$1
header=$2  # and "sanitized" for a sanitized build
declared=$(grep -E '^KEL_API' "$header" |
  sed -E 's/^KEL_API extern [^(]*\(\*([A-Za-z_][A-Za-z0-9_]*)\).*/\1/;  # hook variables
          s/^KEL_API extern .* ([A-Za-z_][A-Za-z0-9_]*);.*/\1/;          # plain variables
          s/^KEL_API [^(]*[ *]([A-Za-z_][A-Za-z0-9_]*)\(.*/\1/' |        # functions
  sort -u)
# A sanitized build adds its runtimes' names; clang's adds the type-name
# records of its function-type checks and the fuzzer's coverage sections.
ignored='_init|_fini|_edata|_end|__bss_start'
if [ "${3:-}" = sanitized ]; then
  ignored="$ignored|__odr_asan\..*|__asan_.*|__ubsan_.*|_ZTI.*|_ZTS.*|__start___sancov_.*|__stop___sancov_.*"
fi
exported=$(nm -D --defined-only "$lib" | awk '{print $3}' | grep -v -E "^($ignored)\$" | sort -u)
if [ "$declared" != "$exported" ]; then
  echo "declared but not exported:"; comm -23 <(echo "$declared") <(echo "$exported")
  echo "exported but not declared:"; comm -13 <(echo "$declared") <(echo "$exported")
  exit 1
fi
echo "$(echo "$exported" | wc -l) exported names match the header"
