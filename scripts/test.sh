#!/usr/bin/env bash
# Builds and runs every test: the default build, then the sanitizer builds
# (AddressSanitizer+UndefinedBehaviorSanitizer, ThreadSanitizer), the schedule explorer's
# optimised build (its tests only), then the arm64
# cross build with its tests run under qemu-user.
# Usage: scripts/test.sh [PRESET...]   (default: default asan-ubsan tsan explore arm64)
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

# provider/ and hal/ against the real platform headers of every supported release.
scripts/platform-check.sh

presets=("$@")
((${#presets[@]})) || presets=(default asan-ubsan tsan explore arm64)
[[ " ${presets[*]} " != *" arm64 "* ]] || scripts/setup-arm64.sh
jobs=$(nproc)
for preset in "${presets[@]}"; do
  echo "=== preset ${preset}"
  cmake --preset "${preset}" >/dev/null
  cmake --build --preset "${preset}" -j "${jobs}"
  ctest --preset "${preset}" -j "${jobs}"
done
