#!/usr/bin/env bash
# Installs the build and test tools this project needs when any is missing
# (Debian/Ubuntu, as root or through sudo). Safe to run again.
set -euo pipefail
missing=()
command -v cmake >/dev/null 2>&1 || missing+=(cmake)
command -v ninja >/dev/null 2>&1 || missing+=(ninja-build)
command -v g++ >/dev/null 2>&1 || missing+=(g++)
command -v gcc >/dev/null 2>&1 || missing+=(gcc)
command -v pkg-config >/dev/null 2>&1 || missing+=(pkg-config)
command -v nm >/dev/null 2>&1 || missing+=(binutils)
[ -f /usr/include/gtest/gtest.h ] || missing+=(libgtest-dev)
[ -f /usr/include/benchmark/benchmark.h ] || missing+=(libbenchmark-dev)
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
