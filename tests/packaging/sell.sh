#!/usr/bin/env bash
# Lets the sample register sell in a shop of its own, first with a loyalty server and then without.
#   sell.sh LOYALTY_SERVER SHOP PROGRAM...
set -euo pipefail
server=$1 shop=$2; shift 2
source=$(cd "$(dirname "$0")/../.." && pwd)

coproc SERVER { exec "$server" --quiet; }
server_pid=$SERVER_PID
trap 'kill "$server_pid" 2>/dev/null || true' EXIT
read -r -u "${SERVER[0]}" _ _ address
sed "s|10\.0\.0\.5:8080|$address|; s|\"http://10.0.0.6:8080/loyalty\"|\"\"|; s|\"timeout\":30|\"timeout\":5|" \
  "$source/packaging/CONFIG.JSN" >"$shop/CONFIG.JSN"

expect() { grep -qF -- "$1" "$shop/output" || { echo "missing: $1"; cat "$shop/output" "$shop/TRACE.TXT"; exit 1; }; }

"$@" 1000000001 7 10000 5000 >"$shop/output" 2>&1 || { cat "$shop/output" "$shop/TRACE.TXT"; exit 1; }
expect 'on the card: 70000'
expect 'RRN 12345'
expect 'spent 5000'
expect 'Магазин'
expect 'Спасибо!'
[ -s "$shop/LOG" ] || { echo 'no record in LOG'; exit 1; }

# A locked card: the server's refusal arrives, and the program says so.
if "$@" 1000000006 7 10000 0 >"$shop/output" 2>&1; then echo 'a locked card bought something'; exit 1; fi
expect '-405 Ошибка с сервера'

# Nobody there: the balance cannot be asked for.
kill "$server_pid"; wait "$server_pid" 2>/dev/null || true
if "$@" 1000000001 7 10000 0 >"$shop/output" 2>&1; then echo 'a balance came from nowhere'; exit 1; fi
expect '-501 Ошибка соединения с сервером'
echo "$(basename "$shop"): sold, refused, not connected"
