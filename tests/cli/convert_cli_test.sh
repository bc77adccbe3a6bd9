#!/usr/bin/env bash
# 'qxutil convert' end to end: round trips, line ends, --strict leaving the
# target untouched, and the exit code for unknown names.
# Usage: convert_cli_test.sh QXUTIL SAMPLE
. "$(dirname "$0")/cli_lib.sh"
qxutil=$1
sample=$2

# WindowsLatin1 -> UTF-8 -> WindowsLatin1 gives the same bytes.
"$qxutil" convert --from WindowsLatin1 --to UTF-8 "$sample" "$work/roads.utf8"
grep -q "Zürich – Genève" "$work/roads.utf8" || fail "UTF-8 text"
"$qxutil" convert --from utf-8 --to windowslatin1 "$work/roads.utf8" "$work/roads.back"
cmp -s "$sample" "$work/roads.back" || fail "round trip through UTF-8"

# Through a map-only member (MacRoman has no code page) and back, via stdin/stdout.
"$qxutil" convert --from UTF-8 --to MacRoman < "$work/roads.utf8" 2> /dev/null \
  | "$qxutil" convert --from mac --to UTF-8 - "$work/roads.mac.utf8"
grep -q "Zürich – Genève" "$work/roads.mac.utf8" || fail "MacRoman round trip"

# A double-byte page: every chunk boundary must keep pairs whole.
printf '\xe6\x97\xa5\xe6\x9c\xac\xe8\xaa\x9e' > "$work/ja.utf8"
for i in $(seq 1 200000); do printf '\xe3\x81\x82'; done >> "$work/ja.utf8"
"$qxutil" convert --from UTF-8 --to WindowsJapanese "$work/ja.utf8" "$work/ja.sjis"
[[ $(head -c 6 "$work/ja.sjis" | od -An -tx1 | tr -d ' \n') == "93fa967b8cea" ]] || fail "932 bytes"
"$qxutil" convert --from WindowsJapanese --to UTF-8 "$work/ja.sjis" "$work/ja.back"
cmp -s "$work/ja.utf8" "$work/ja.back" || fail "932 round trip"

# Line ends: CR LF to LF and to the target's native CR.
"$qxutil" convert --from WindowsLatin1 --to UTF-8 --line-ends lf "$sample" "$work/lf"
grep -q $'\r' "$work/lf" && fail "CR left after --line-ends lf"
"$qxutil" convert --from WindowsLatin1 --to MacRoman --line-ends native "$sample" "$work/cr" 2> /dev/null
[[ $(tr -cd '\n' < "$work/cr" | wc -c) -eq 0 ]] || fail "LF left after --line-ends native for MacRoman"
[[ $(tr -cd '\r' < "$work/cr" | wc -c) -eq 6 ]] || fail "CR line ends for MacRoman"

# --strict: unmappable characters fail and leave the target untouched.
echo "keep me" > "$work/target"
[[ $(status "$qxutil" convert --from WindowsLatin1 --to CodePage437 --strict "$sample" \
  "$work/target") == 1 ]] || fail "--strict succeeded"
grep -q "could not be converted" "$work/err" || fail "no report of unmappable characters"
[[ $(cat "$work/target") == "keep me" ]] || fail "target changed by a failed conversion"
ls "$work" | grep -q qxutil- && fail "temporary file left behind"
# Without --strict the same conversion succeeds with a report.
"$qxutil" convert --from WindowsLatin1 --to CodePage437 "$sample" "$work/target" 2> /dev/null
[[ $(cat "$work/target") != "keep me" ]] || fail "target not written"

# Unknown names: exit 2 and the list of valid names.
[[ $(status "$qxutil" convert --from Klingon --to UTF-8 "$sample" "$work/x") == 2 ]] \
  || fail "unknown charset exit code"
grep -q "WindowsLatin1" "$work/err" || fail "valid names not listed"
[[ ! -e "$work/x" ]] || fail "output made for an unknown charset"
echo "convert_cli_test: ok"
