#!/usr/bin/env bash
# Unpacks a flavour's zip as a register programmer would, builds the sample register with nothing but what is in it, and lets it
# sell: here, or under Wine.
#   package.sh FLAVOUR LOYALTY_SERVER
set -euo pipefail
flavour=$1 server=$2
source=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
version=$(sed -n 's/^project(lumo VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")
name=lumo-$version-$flavour
(cd "$work" && cmake -E tar xf "$source/build/packages/$name.zip")
shop=$work/$name
warnings=(-std=c99 -Wall -Wextra -Wpedantic -Werror)
case $flavour in
  linux)
    (cd "$shop" && cc "${warnings[@]}" sale.c -I. -L. -llumo -Wl,-rpath,'$ORIGIN' -o sale)
    exec "$source/tests/packaging/sell.sh" "$server" "$shop" "$shop/sale" ;;
  windows-x64) compiler=x86_64-w64-mingw32-gcc-posix ;;
  windows-x86) compiler=i686-w64-mingw32-gcc-posix ;;
  wince-x86)
    compiler=i686-w64-mingw32-gcc-posix
    cp "$source"/build/windows-x86/bin/{coredll,ws2}.dll "$shop/"
    # For a terminal the sample calls the C library and lumo, and no call of desktop Windows: those are the decorated names.
    "$compiler" "${warnings[@]}" -DUNDER_CE -c "$shop/sale.c" -o "$work/sale.o"
    desktop=$(i686-w64-mingw32-nm -u "$work/sale.o" | grep @ || true)
    [ -z "$desktop" ] || { echo "sale.c calls what Windows CE lacks: $desktop"; exit 1; } ;;
  *) echo "package.sh: nothing here runs $flavour" >&2; exit 2 ;;
esac
"$compiler" "${warnings[@]}" "$shop/sale.c" "$shop/lumo.lib" -o "$shop/sale.exe"
"$source/tests/packaging/sell.sh" "$server" "$shop" "$source/script/wine-run" "$shop/sale.exe"
