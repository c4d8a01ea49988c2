#!/usr/bin/env bash
# Builds and runs every test: the default build, then the sanitizer builds
# (AddressSanitizer+UndefinedBehaviorSanitizer, ThreadSanitizer).
# Usage: scripts/test.sh [PRESET...]   (default: default asan-ubsan tsan)
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

# provider/ and hal/ against the real platform headers of every supported release.
scripts/platform-check.sh

presets=("$@")
((${#presets[@]})) || presets=(default asan-ubsan tsan)
jobs=$(nproc)
for preset in "${presets[@]}"; do
  echo "=== preset ${preset}"
  cmake --preset "${preset}" >/dev/null
  cmake --build --preset "${preset}" -j "${jobs}"
  ctest --preset "${preset}" -j "${jobs}"
done
