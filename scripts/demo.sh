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
