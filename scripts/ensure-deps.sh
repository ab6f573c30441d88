#!/usr/bin/env bash
# Installs what a job of this project needs when any of it is missing
# (Debian/Ubuntu, as root or through sudo). Safe to run again.
#   scripts/ensure-deps.sh build   compiler, CMake, Ninja (OpenMP comes with GCC),
#                                  pkg-config and Highway (the SIMD kernels; a
#                                  -DKELCC_SIMD_TARGETS=scalar build needs neither),
#                                  libpng (the kelcc tool)
#   scripts/ensure-deps.sh test    the above, GoogleTest, pkg-config and nm
#   scripts/ensure-deps.sh bench   the above for build, Google Benchmark, libyuv and OpenCV (the peers)
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
  build)
    [ -f /usr/include/png.h ] || missing+=(libpng-dev)
    ;;
  test)
    [ -f /usr/include/png.h ] || missing+=(libpng-dev)
    command -v nm >/dev/null 2>&1 || missing+=(binutils)
    [ -f /usr/include/gtest/gtest.h ] || missing+=(libgtest-dev)
    ;;
  bench)
    [ -f /usr/include/benchmark/benchmark.h ] || missing+=(libbenchmark-dev)
    [ -f /usr/include/libyuv.h ] || missing+=(libyuv-dev)
    { command -v pkg-config >/dev/null 2>&1 && pkg-config --exists opencv4; } || missing+=(libopencv-dev)
    ;;
  tsan)
    command -v nm >/dev/null 2>&1 || missing+=(binutils)
    [ -f /usr/include/gtest/gtest.h ] || missing+=(libgtest-dev)
    if command -v clang++ >/dev/null 2>&1; then
      # A program built with TSan and OpenMP links (runtimes present), and
      # Archer lies beside the OpenMP runtime.
      probe=$(mktemp -d)
      echo 'int main() { return 0; }' > "$probe/p.cpp"
      clang++ -fsanitize=thread -fopenmp "$probe/p.cpp" -o "$probe/p" >/dev/null 2>&1 || missing+=(libclang-rt-dev libomp-dev)
      rm -rf "$probe"
      [ -f "$(clang++ -print-resource-dir)/../../libarcher.so" ] || missing+=(libomp-dev)
    else
      missing+=(clang libclang-rt-dev libomp-dev)
    fi
    ;;
  *) echo "usage: $0 build|test|bench|tsan" >&2; exit 2 ;;
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
