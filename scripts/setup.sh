#!/usr/bin/env bash
# Installs, with apt-get, whatever the build and the tests need and this
# machine lacks. Safe to run again: it installs nothing that is present.
set -euo pipefail

packages=(
  cmake make g++ clang libclang-rt-14-dev pkg-config python3
  libgtest-dev libgmock-dev libbenchmark-dev libpixman-1-dev
  libsqlite3-dev libicu-dev libroaring-dev libgeos-dev time
  libgsf-bin python3-olefile  # test-only: compound files made and cross-read
)

missing=()
for p in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$p")
done

[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "setup: installing ${missing[*]}"
sudo=""
if [[ $(id -u) -ne 0 ]]; then
  command -v sudo >/dev/null || { echo "setup: need root (or sudo) to install ${missing[*]}" >&2; exit 1; }
  sudo="sudo"
fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
