#!/usr/bin/env bash
# The main job: builds the library and the scenario runner, then runs an
# example scenario and prints its transcript.
# Usage: scripts/run-example.sh [SCENARIO]   (default: examples/daemon_restart.scn)
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset default >/dev/null
cmake --build --preset default -j "$(nproc)" --target zdgnss-sim
build/default/sim/zdgnss-sim --check "${1:-examples/daemon_restart.scn}"
