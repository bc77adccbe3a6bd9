#!/usr/bin/env bash
# 'qxutil strings' end to end: the test module lists as written, a source
# compiled by hand lists the same, a failed compile keeps its output.
# Usage: strings_cli_test.sh QXUTIL MODULE NOT_A_STRING_MODULE SOURCE_DIR CXX
. "$(dirname "$0")/cli_lib.sh"
qxutil=$1
module=$2
other=$3
src=$4
cxx=$5

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
[[ $(status "$qxutil" strings compile "$work/bad.rc" -o "$work/strings.cpp") == 1 ]] \
  || fail "an unknown identifier compiled"
grep -q "bad.rc:3: unknown identifier 'IDS_NOWHERE'" "$work/err" || fail "error message"
cmp -s "$work/strings.cpp" "$work/keep.cpp" || fail "output changed by a failed compile"
[[ $(status "$qxutil" strings compile "$work/bad.rc") == 2 ]] || fail "missing -o"
[[ $(status "$qxutil" strings list) == 2 ]] || fail "list without a module"
[[ $(status "$qxutil" strings list "$work/none.so") == 1 ]] || fail "missing module"
[[ $(status "$qxutil" strings list "$other") == 1 ]] || fail "not a string module"
grep -q "not a string module" "$work/err" || fail "not a string module: message"
echo "strings: ok"
