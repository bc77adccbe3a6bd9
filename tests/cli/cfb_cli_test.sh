#!/usr/bin/env bash
# 'qxutil cfb' end to end: list, cat (nested, "Book", v4), a missing stream
# leaving the output as it was, and the exit codes of bad files.
# Usage: cfb_cli_test.sh QXUTIL SAMPLE_DIR
. "$(dirname "$0")/cli_lib.sh"
qxutil=$1
samples=$2

"$qxutil" cfb list "$samples/nested.cfb" > "$work/list"
expected=$(printf '%s\n' "$samples/nested.cfb" "  Top/" "    Side  4" "    Middle/" \
  "      Big  9000" "      Leaf  70" "  root stream  5")
[[ "$(cat "$work/list")" == "$expected" ]] || fail "list: $(cat "$work/list")"

"$qxutil" cfb cat "$samples/nested.cfb" top/middle/BIG "$work/big"
[[ $(stat -c %s "$work/big") == 9000 ]] || fail "nested cat size"
"$qxutil" cfb cat "$samples/workbook.cfb" Book > "$work/book"
"$qxutil" cfb cat "$samples/workbook.cfb" Workbook "$work/workbook"
cmp -s "$work/book" "$work/workbook" || fail "Book is Workbook"
[[ $(stat -c %s "$work/book") == 5000 ]] || fail "Workbook size"
"$qxutil" cfb cat "$samples/v4.cfb" Large "$work/large"
[[ $(stat -c %s "$work/large") == 20000 ]] || fail "v4 stream size"

# A missing stream: exit 1 and the output as it was.
echo keep > "$work/out"
if "$qxutil" cfb cat "$samples/nested.cfb" Nope "$work/out" 2> "$work/err"; then fail "missing stream"; fi
grep -q "no stream 'Nope'" "$work/err" || fail "missing stream message"
[[ $(cat "$work/out") == keep ]] || fail "output touched"

# Not a compound file, damaged, absent, bad usage.
[[ $(status "$qxutil" cfb list "$0") == 1 ]] || fail "not compound exit"
grep -q "not a compound file" "$work/err" || fail "not compound message"
head -c 1500 "$samples/large.cfb" > "$work/cut.cfb"
[[ $(status "$qxutil" cfb cat "$work/cut.cfb" Data) == 1 ]] || fail "damaged exit"
grep -q "damaged compound file" "$work/err" || fail "damaged message"
[[ $(status "$qxutil" cfb list "$work/absent.cfb") == 1 ]] || fail "absent exit"
[[ $(status "$qxutil" cfb) == 2 ]] || fail "usage exit"
echo "cfb_cli: all passed"
