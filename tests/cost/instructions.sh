#!/usr/bin/env bash
# How many instructions a payment of ten goods takes, C library included, may not go above the goal.
#   instructions.sh PROGRAM MOST
set -euo pipefail
told=$(valgrind --tool=callgrind --callgrind-out-file=/dev/null --toggle-collect=MeasuredPayment \
  "$1" --gtest_filter=Payment.IsMadeOnceToBeginWithAndOnceToBeCounted 2>&1) || { echo "$told"; exit 1; }
count=$(sed -n 's/.*Collected : \([0-9]*\).*/\1/p' <<<"$told")
echo "a payment of 10 goods: $count instructions of $2"
# None at all would be a count that never began.
[ "${count:-0}" -gt 100000 ] && [ "$count" -le "$2" ]
