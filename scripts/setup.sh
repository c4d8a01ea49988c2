#!/usr/bin/env bash
# Installs, when missing, every Debian package the build, the tests and the
# scenario runner need, and any further packages named as arguments. Safe to run
# again: it does nothing when all are present.
# Usage: scripts/setup.sh [PACKAGE...]
set -euo pipefail

packages=(
  android-liblog-dev android-libutils-dev android-libbase-dev android-libcutils-dev
  hidl-gen blueprint-tools
  cmake ninja-build g++ clang llvm libclang-rt-14-dev libc++-14-dev libc++abi-14-dev googletest
  libgtest-dev libgmock-dev libbenchmark-dev
  python3 clang-format
  "$@"
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

if ((${#missing[@]})); then
  echo "setup: installing ${missing[*]}"
  sudo_cmd=""
  [ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"
  $sudo_cmd apt-get update
  DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y --no-install-recommends "${missing[@]}"
fi
