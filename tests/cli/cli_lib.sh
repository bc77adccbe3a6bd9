# Sourced by the end-to-end scripts: a scratch directory removed on exit,
# fail, and status (a command's exit code; its errors go to $work/err).
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }
status() { set +e; "$@" > /dev/null 2> "$work/err"; echo $?; set -e; }
