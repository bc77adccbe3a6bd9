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
show date --locale de-DE 5.3.24 20240229 31.2.2024
show date --locale en-US --format "dddd, MMMM d, yyyy" 3/5/2024
