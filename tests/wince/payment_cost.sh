#!/usr/bin/env bash
# Counts the instructions of one payment of 1, 10 and 100 goods by a Windows CE file, under an emulator, and prints a row for each:
# those of the file, and those of the stand-ins and the C library under it. Fails when 10 goods take more than 2,000,000 of the
# file's, or when an ARM file reads or writes what does not lie on its own size, which the emulator lets pass and a terminal may not.
#   payment_cost.sh EMULATOR PLUGIN PROGRAM FILE
set -euo pipefail
emulator=$1 plugin=$2 program=$3 file=$4
export LUMO_LOAD_AT=60000000
for goods in 1 10 100; do
  said=$("$emulator" -plugin "file=$plugin,base=$LUMO_LOAD_AT,size=100000" "$program" "$file" "$goods" 2>&1) \
    || { echo "$said"; exit 1; }
  read -r in_file elsewhere accesses astray < <(tail -n 1 <<<"$said" | tr -cd '0-9 \n')
  echo "$goods goods: $in_file instructions in the file, $elsewhere elsewhere; $astray of $accesses accesses astray"
  [ "$in_file" -gt 10000 ] || { echo 'hardly anything was counted'; exit 1; }
  [ "$goods" != 10 ] || [ "$in_file" -le 2000000 ] || { echo 'that is more than a terminal should wait for'; exit 1; }
  case $emulator in *arm) [ "$astray" -eq 0 ] || { echo "$said"; exit 1; } ;; esac
done
