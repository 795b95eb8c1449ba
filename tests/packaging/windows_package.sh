#!/usr/bin/env bash
# Unpacks a flavour's zip as a register programmer would, builds the sample register with nothing but what is in it, and lets it
# sell under Wine.
#   windows_package.sh FLAVOUR LOYALTY_SERVER
set -euo pipefail
flavour=$1 server=$2
source=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
case $flavour in
  windows-x64) compiler=x86_64-w64-mingw32-gcc-posix ;;
  windows-x86 | wince-x86) compiler=i686-w64-mingw32-gcc-posix ;;
  *) echo "windows_package.sh: nothing here runs $flavour" >&2; exit 2 ;;
esac
(cd "$work" && cmake -E tar xf "$source"/build/packages/lumo-*-"$flavour".zip)
shop=$(echo "$work"/lumo-*-"$flavour")
"$compiler" -std=c99 -Wall -Wextra -Wpedantic -Werror "$shop/sale.c" "$shop/lumo.lib" -o "$shop/sale.exe"
if [ "$flavour" = wince-x86 ]; then cp "$source"/build/windows-x86/bin/{coredll,ws2}.dll "$shop/"; fi
"$source/tests/packaging/sell.sh" "$server" "$shop" "$source/script/wine-run" "$shop/sale.exe"
