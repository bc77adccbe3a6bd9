#!/usr/bin/env bash
# 'qxutil fold' and 'qxutil sort' end to end: tables and languages,
# stability, --unique, merged runs, lines kept byte for byte, the errors.
# Usage: fold_sort_cli_test.sh QXUTIL
. "$(dirname "$0")/cli_lib.sh"
qxutil=$1

printf 'Zürich\nÉcole\nzurich\nÅland\nAarhus\necole\nÖrebro\nabcd\nabc\nÆrø\n' > "$work/places"

[[ $("$qxutil" fold "$work/places" | head -3 | tr '\n' ' ') == "ZURICH ECOLE ZURICH " ]] \
  || fail "fold with the default table"
[[ $(printf 'Øre\r\nstraße' | "$qxutil" fold --table 41909) == $'\\RE\nSTRASE' ]] \
  || fail "fold with table 41909 (CR LF and a last line without a line end)"

# Equal keys keep their input order (Zürich before zurich, École before ecole).
expected=$'Aarhus\nabc\nabcd\nÅland\nÆrø\nÉcole\necole\nÖrebro\nZürich\nzurich'
[[ $("$qxutil" sort "$work/places") == "$expected" ]] || fail "sort with the default table"
expected=$'Aarhus\nabc\nabcd\nÉcole\necole\nzurich\nZürich\nÅland\nÆrø\nÖrebro'
[[ $("$qxutil" sort --language sv-SE < "$work/places") == "$expected" ]] || fail "sort, Swedish"
[[ $("$qxutil" sort --language 1030 "$work/places" | tail -3 | tr '\n' ' ') == "Ærø Örebro Åland " ]] \
  || fail "sort, Danish"
[[ $("$qxutil" sort --unique "$work/places" | tr '\n' ' ') \
   == "Aarhus abc abcd Åland Ærø École Örebro Zürich " ]] || fail "sort --unique"

# A large input sorted in runs of 1 MiB gives what one run gives; the folded
# lines come out in byte order; every input line comes out unchanged.
awk 'BEGIN { split("Zürich École ecole Ölands Åre Straße strasse Ærø", w, " ");
             for (i = 0; i < 150000; i++) printf "%s %d\n", w[i % 8 + 1], (i * 7919) % 1000 }' \
  > "$work/big"
"$qxutil" sort --memory 1 "$work/big" > "$work/runs"
"$qxutil" sort "$work/big" > "$work/one"
cmp -s "$work/runs" "$work/one" || fail "sorting in runs differs from sorting at once"
"$qxutil" fold "$work/one" | LC_ALL=C sort -c || fail "folded lines out of order"
cmp -s <(LC_ALL=C sort "$work/big") <(LC_ALL=C sort "$work/one") || fail "lines lost or changed"
printf 'a\xffb\nA\xffB\n' | "$qxutil" sort | cmp -s - <(printf 'a\xffb\nA\xffB\n') \
  || fail "invalid UTF-8 not kept byte for byte"

# Errors: exit 2 with a message for usage, 1 for files.
[[ $(status "$qxutil" sort --table 12345 "$work/places") == 2 ]] || fail "unknown table"
grep -q "unknown table '12345'; the tables are 65496, 44414 (5607)" "$work/err" || fail "table list"
[[ $(status "$qxutil" fold --charset Klingon "$work/places") == 2 ]] || fail "unknown charset"
grep -q "unknown character set 'Klingon'" "$work/err" || fail "charset message"
[[ $(status "$qxutil" fold --table 5607 --charset WindowsCyrillic "$work/places") == 2 ]] \
  || fail "5607 outside WindowsLatin1"
[[ $(status "$qxutil" sort --table 1298 --language 1053 "$work/places") == 2 ]] \
  || fail "--table with --language"
[[ $(status "$qxutil" sort "$work/missing") == 1 ]] || fail "missing input"
echo "fold and sort: all checks passed"
