#!/usr/bin/env bash
# Installs the built tree into a folder of its own, builds the sample register against that as an outside project would, and lets
# it sell something.
#   outside_project.sh cmake|pkg-config BUILD LOYALTY_SERVER CMAKE CC
set -euo pipefail
way=$1 build=$2 server=$3 cmake=$4 cc=$5
source=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export CMAKE_GENERATOR=Ninja  # which the machine has, being the project's own

"$cmake" --install "$build" --prefix "$work/first" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
# An installed folder may be moved.
mv "$work/first" "$work/installed"
mkdir "$work/project" "$work/shop"
cp "$source"/examples/c/* "$work/project/"
cd "$work/project"
case $way in
  cmake)
    program=build/sale
    "$cmake" -S . -B build -DCMAKE_PREFIX_PATH="$work/installed" -DCMAKE_C_COMPILER="$cc" -DCMAKE_BUILD_TYPE=Release \
      && "$cmake" --build build ;;
  pkg-config)
    program=sale
    pc=$(find "$work/installed" -name lumo.pc)
    # shellcheck disable=SC2086
    flags=$(PKG_CONFIG_PATH=$(dirname "$pc") pkg-config --cflags --libs lumo) \
      && "$cc" -std=c99 -Wall -Wextra -Wpedantic -Werror sale.c $flags -o sale ;;
esac >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }

# A distribution's folder of libraries may lie deeper: the header is still found.
if [ "$way" = pkg-config ]; then
  "$cmake" -S "$source" -B "$work/deep" -DCMAKE_INSTALL_LIBDIR=lib/some/where -DLUMO_TESTS=OFF -DLUMO_TOOLS=OFF >"$work/log" 2>&1 \
    || { cat "$work/log"; exit 1; }
  mkdir -p "$work/usr/lib/some/where/pkgconfig" "$work/usr/include"
  cp "$work/deep/packaging/lumo.pc" "$work/usr/lib/some/where/pkgconfig/"
  found=$(PKG_CONFIG_PATH="$work/usr/lib/some/where/pkgconfig" pkg-config --variable=includedir lumo)
  [ "$found" -ef "$work/usr/include" ] || { echo "lumo.h is looked for in $found"; exit 1; }
fi

# The shop: the library file in a folder that it may write to.
cp "$program" "$work/shop/sale"
cp "$(find "$work/installed" -name liblumo.so)" "$work/shop/"
LD_LIBRARY_PATH="$work/shop" "$source/tests/packaging/sell.sh" "$server" "$work/shop" "$work/shop/sale"
