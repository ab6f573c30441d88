#!/usr/bin/env bash
# Installs what a job of this project needs when any of it is missing
# (Debian/Ubuntu, as root or through sudo). Safe to run again.
#   scripts/ensure-deps.sh build   compiler, CMake, Ninja (OpenMP comes with GCC),
#                                  pkg-config and Highway (the SIMD kernels; a
#                                  -DKELCC_SIMD_TARGETS=scalar build needs neither),
#                                  libpng (the kelcc tool)
#   scripts/ensure-deps.sh test    the above, GoogleTest, pkg-config and nm
#   scripts/ensure-deps.sh bench   the above for build, Google Benchmark, libyuv and OpenCV (the peers)
#   scripts/ensure-deps.sh fuzz    the above for build, clang with libFuzzer and the
#                                  sanitizer runtimes, LLVM's OpenMP runtime, llvm-symbolizer
#   scripts/ensure-deps.sh sanitize  the above for test and for fuzz (the sanitizer build
#                                  runs the suite and the fuzz targets' short runs)
#   scripts/ensure-deps.sh tsan    the above for test, clang with its sanitizer runtimes,
#                                  and LLVM's OpenMP runtime with its Archer tool
set -euo pipefail
job=${1:-build}
missing=()
command -v cmake >/dev/null 2>&1 || missing+=(cmake)
command -v ninja >/dev/null 2>&1 || missing+=(ninja-build)
command -v g++ >/dev/null 2>&1 || missing+=(g++)
command -v gcc >/dev/null 2>&1 || missing+=(gcc)
command -v pkg-config >/dev/null 2>&1 || missing+=(pkg-config)
[ -f /usr/include/hwy/highway.h ] || missing+=(libhwy-dev)
case $job in
  build|test|fuzz|sanitize|tsan)
    [ -f /usr/include/png.h ] || missing+=(libpng-dev)
    ;;&
  test|sanitize|tsan)
    command -v nm >/dev/null 2>&1 || missing+=(binutils)
    [ -f /usr/include/gtest/gtest.h ] || missing+=(libgtest-dev)
    ;;&
  fuzz|sanitize|tsan)
    command -v clang++ >/dev/null 2>&1 || missing+=(clang)
    # libFuzzer and the sanitizer runtimes: libclang-rt-N-dev (Debian 12) or libclang-rt-dev.
    if ! ls /usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a >/dev/null 2>&1; then
      if apt-cache show libclang-rt-dev >/dev/null 2>&1; then
        missing+=(libclang-rt-dev)
      else
        ver=$(clang --version 2>/dev/null | grep -Eo 'version [0-9]+' | grep -Eo '[0-9]+' || echo 14)
        missing+=("libclang-rt-$ver-dev")
      fi
    fi
    # LLVM's OpenMP runtime (clang's -fopenmp) and, beside it, Archer.
    ls /usr/lib/llvm-*/lib/libarcher.so >/dev/null 2>&1 || missing+=(libomp-dev)
    command -v llvm-symbolizer >/dev/null 2>&1 || missing+=(llvm)
    ;;&
  bench)
    [ -f /usr/include/benchmark/benchmark.h ] || missing+=(libbenchmark-dev)
    [ -f /usr/include/libyuv.h ] || missing+=(libyuv-dev)
    { command -v pkg-config >/dev/null 2>&1 && pkg-config --exists opencv4; } || missing+=(libopencv-dev)
    ;;&
  build|test|bench|fuzz|sanitize|tsan) ;;
  *) echo "usage: $0 build|test|bench|fuzz|sanitize|tsan" >&2; exit 2 ;;
esac
if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi
echo "installing: ${missing[*]}"
if [ "$(id -u)" -eq 0 ]; then
  sudo=""
elif command -v sudo >/dev/null 2>&1; then
  sudo="sudo"
else
  echo "missing packages (${missing[*]}) and no way to install them: run as root" >&2
  exit 1
fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
