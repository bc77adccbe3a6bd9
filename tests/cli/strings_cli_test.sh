#!/usr/bin/env bash
# 'qxutil strings' end to end: the test module lists as written, a source
# compiled by hand lists the same, a failed compile keeps its output.
# Usage: strings_cli_test.sh QXUTIL MODULE NOT_A_STRING_MODULE SOURCE_DIR CXX
set -euo pipefail
qxutil=$1
module=$2
other=$3
src=$4
cxx=$5
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

cat > "$work/expected" <<'TEXT'
1	Roads
59	The system failed
1001	Cannot open ^0.
1002	Say "yes" or "no"
1003	Tab\there\nLine two\\end!A
1004	Zürich – Genève
1005	Zürich – Genève
1006	one, two, three
TEXT
"$qxutil" strings list "$module" > "$work/listed"
head -n 8 "$work/listed" | cmp -s - "$work/expected" || fail "listing of the test module"
[[ $(sed -n 10p "$work/listed") == $'65535\tlast' ]] || fail "the last string"

# The command by hand, as the CMake function runs it, with -I joined.
"$qxutil" strings compile "$src/tests/text/resource_strings.rc" -o "$work/strings.cpp" \
  -I"$src/tests/text/resource_include" 2> "$work/warnings"
grep -q "cannot find include file 'winres.h'; skipped" "$work/warnings" || fail "warning"
"$cxx" -shared -fPIC -o "$work/strings.so" "$work/strings.cpp"
(cd "$work" && "$qxutil" strings list strings.so) | cmp -s - "$work/listed" || fail "hand-made module"

# A failed compile keeps the previous output; usage errors exit with 2.
printf 'STRINGTABLE\nBEGIN\n  IDS_NOWHERE "x"\nEND\n' > "$work/bad.rc"
cp "$work/strings.cpp" "$work/keep.cpp"
if "$qxutil" strings compile "$work/bad.rc" -o "$work/strings.cpp" 2> "$work/error"; then
  fail "an unknown identifier compiled"
fi
grep -q "bad.rc:3: unknown identifier 'IDS_NOWHERE'" "$work/error" || fail "error message"
cmp -s "$work/strings.cpp" "$work/keep.cpp" || fail "output changed by a failed compile"
set +e
"$qxutil" strings compile "$work/bad.rc" > /dev/null 2>&1; [[ $? -eq 2 ]] || fail "missing -o"
"$qxutil" strings list > /dev/null 2>&1; [[ $? -eq 2 ]] || fail "list without a module"
"$qxutil" strings list "$work/none.so" 2> "$work/error"; [[ $? -eq 1 ]] || fail "missing module"
"$qxutil" strings list "$other" 2> "$work/error"; [[ $? -eq 1 ]] || fail "not a string module"
grep -q "not a string module" "$work/error" || fail "not a string module: message"
set -e
echo "strings: ok"
