#!/usr/bin/env bash
# Installs the library three ways and builds consumer.c against each install
# twice, through pkg-config and through find_package(kelcc):
#   - the test build's own prefix (/usr/local, library folder lib) under DESTDIR;
#   - /usr under DESTDIR, from a library-only build configured for /usr, whose
#     library folder is the multiarch one (lib/x86_64-linux-gnu);
#   - a prefix given at install time, then moved elsewhere (relocated).
set -euo pipefail
cmake=$1 build=$2 scratch=$3 cc=$4 here=$5 source=$6 generator=$7 make=$8
rm -rf "$scratch"
mkdir -p "$scratch"

fail() { echo "FAIL: $*" >&2; exit 1; }

# consume NAME PREFIX: PREFIX is where the installed tree lies now.
consume() {
  local name=$1 prefix=$2 libdir pc
  libdir=$(find "$prefix" -name 'libkelccpx.so' -printf '%h\n' | head -n 1)
  [ -n "$libdir" ] || fail "$name: no library under $prefix"
  pc=$(find "$prefix" -name kelcc.pc | head -n 1)
  [ "$(dirname "$pc")" = "$libdir/pkgconfig" ] || fail "$name: kelcc.pc is not beside the library ($pc)"
  local flags
  flags=$(PKG_CONFIG_PATH="$libdir/pkgconfig" PKG_CONFIG_LIBDIR=/nonexistent pkg-config --cflags --libs kelcc)
  # Every path pkg-config answers must lie inside the installed tree and exist.
  for word in $flags; do
    case $word in
      -I*|-L*) dir=$(realpath -m "${word:2}")
               case $dir in "$(realpath "$prefix")"/*) ;; *) fail "$name: $word lies outside $prefix";; esac
               [ -d "$dir" ] || fail "$name: $word does not exist";;
    esac
  done
  "$cc" -std=c99 -Wall -Werror -pedantic "$here/consumer.c" -o "$scratch/$name-pc" $flags
  LD_LIBRARY_PATH="$libdir" "$scratch/$name-pc" >/dev/null || fail "$name: pkg-config consumer failed"
  "$cmake" -S "$here" -B "$scratch/$name-cmake" -G "$generator" -DCMAKE_MAKE_PROGRAM="$make" \
    -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_C_COMPILER="$cc" >/dev/null
  grep -q "^kelcc_DIR:PATH=$(realpath "$prefix")/" "$scratch/$name-cmake/CMakeCache.txt" \
    || fail "$name: find_package found kelcc outside $prefix"
  "$cmake" --build "$scratch/$name-cmake" >/dev/null
  "$scratch/$name-cmake/consumer" >/dev/null || fail "$name: find_package consumer failed"
  echo "$name: pkg-config and find_package consumers run (library in ${libdir#$prefix})"
}

# 1. The configured prefix, staged under DESTDIR.
installed_prefix=$(sed -n 's/^CMAKE_INSTALL_PREFIX:PATH=//p' "$build/CMakeCache.txt")
DESTDIR="$scratch/stage" "$cmake" --install "$build" >/dev/null
consume configured "$scratch/stage$installed_prefix"

# 2. /usr under DESTDIR: GNUInstallDirs picks the multiarch library folder.
"$cmake" -S "$source" -B "$scratch/usr-build" -G "$generator" -DCMAKE_MAKE_PROGRAM="$make" \
  -DCMAKE_C_COMPILER="$cc" -DCMAKE_INSTALL_PREFIX=/usr \
  -DKELCC_TESTS=OFF -DKELCC_BENCH=OFF -DKELCC_EXAMPLES=OFF >/dev/null
"$cmake" --build "$scratch/usr-build" >/dev/null
DESTDIR="$scratch/root" "$cmake" --install "$scratch/usr-build" >/dev/null
consume usr "$scratch/root/usr"

# 3. A prefix chosen at install time, then moved.
"$cmake" --install "$build" --prefix "$scratch/first-place" >/dev/null
mv "$scratch/first-place" "$scratch/moved"
consume relocated "$scratch/moved"
