#!/usr/bin/env bash
# Installs the build into a scratch prefix, then builds consumer.c against it
# twice: once through pkg-config, once through find_package(kelcc).
set -euo pipefail
cmake=$1 build=$2 prefix=$3 cc=$4 here=$5
rm -rf "$prefix"
"$cmake" --install "$build" --prefix "$prefix" >/dev/null
libdir=$(find "$prefix" -name 'libkelccpx.so' -printf '%h\n' | head -n 1)
export PKG_CONFIG_PATH="$libdir/pkgconfig"
"$cc" -std=c99 -Wall -Werror -pedantic "$here/consumer.c" -o "$prefix/consumer-pc" $(pkg-config --cflags --libs kelcc)
LD_LIBRARY_PATH="$libdir" "$prefix/consumer-pc"
"$cmake" -S "$here" -B "$prefix/consumer-build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_C_COMPILER="$cc" >/dev/null
"$cmake" --build "$prefix/consumer-build" >/dev/null
"$prefix/consumer-build/consumer"
