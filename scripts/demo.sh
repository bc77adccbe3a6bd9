#!/usr/bin/env bash
# A short tour of the command-line program; each subsystem adds its part.
set -euo pipefail
qxutil=${1:-build/tools/qxutil/qxutil}
show() { echo "\$ qxutil $*"; "$qxutil" "$@"; echo; }

show --version
show --help
show charsets
show message "Cannot open ^0 (^1 blocks, 100^^ sure)" roads.dat 512
show like "Riverside Drive 12" "River%Drive __"
printf 'Zürich\nÅland\nzurich\nÉcole\nÖrebro\nAarhus\n' > /tmp/places.txt
show fold /tmp/places.txt
show sort /tmp/places.txt
show sort --language sv-SE --unique /tmp/places.txt
show find ROADS-CP1252.TXT --in "tools;samples" --tree
echo "\$ qxutil find nothere.txt --in samples --tree"
"$qxutil" find nothere.txt --in samples --tree || echo "(exit code $?)"
echo
echo "# samples/roads-cp1252.txt is Windows Latin 1 with CR LF line ends:"
od -c samples/roads-cp1252.txt | sed -n 3,4p
echo
show convert --from WindowsLatin1 --to UTF-8 --line-ends lf samples/roads-cp1252.txt
show convert --from WindowsLatin1 --to CodePage437 samples/roads-cp1252.txt /tmp/roads-cp437.txt
show convert --from XASCII --to UTF-8 /tmp/roads-cp437.txt
show date --locale de-DE 5.3.24 20240229 31.2.2024
show date --locale en-US --format "dddd, MMMM d, yyyy" 3/5/2024
show number --locale de-DE --ui "1.234.567,891" -0,5 1e300
echo "# A string module from a Windows resource script (its ids come from a header):"
show strings compile tests/text/resource_strings.rc -o /tmp/qxutil-strings.cpp \
  -I tests/text/resource_include
"${CXX:-c++}" -shared -fPIC -o /tmp/qxutil-strings.so /tmp/qxutil-strings.cpp
show strings list /tmp/qxutil-strings.so
echo "# tests/data/cfb/nested.cfb is a compound file (storages and streams inside one file):"
show cfb list tests/data/cfb/nested.cfb
show cfb cat tests/data/cfb/workbook.cfb Book /tmp/workbook.bin
echo "# \"Book\" is not there, so \"Workbook\" was written: $(wc -c < /tmp/workbook.bin) bytes"
