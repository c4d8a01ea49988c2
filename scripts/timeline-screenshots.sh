#!/usr/bin/env bash
# Renders the replay's timeline picture in a real browser (headless Chromium, Debian's
# package) to PNG, to look at what a user sees. Not part of the test command.
#   1. a 45-minute capture: examples/captures/gpsd-haicom-305N.log laid end to end with its
#      time stamps moved on, so that the replay runs for 45 minutes (long-capture.log)
#   2. a phone log: examples/phone-logs/gnsslogger-pixel7-android14.txt
#   3. a run with a daemon restart: examples/captures/gpsd-rx210.log, killed at second 20
#      and back at 35
# Each PNG shows the top of its page (heading, overview, legend, the first rows) at the
# window size given.
# Usage: scripts/timeline-screenshots.sh [OUT_DIR]   (default: build/screenshots)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
out="$(mkdir -p "${1:-${root}/build/screenshots}" && cd "${1:-${root}/build/screenshots}" && pwd)"

command -v chromium >/dev/null || "${root}/scripts/setup.sh" chromium
(cd "${root}" && scripts/setup.sh && cmake --preset default >/dev/null &&
  cmake --build --preset default -j "$(nproc)" --target zdgnss-sim)
sim="${root}/build/default/sim/zdgnss-sim"

python3 "${root}/scripts/long_capture.py" "${root}/examples/captures/gpsd-haicom-305N.log" \
  45 >"${out}/long-capture.log"

shoot() {  # NAME WIDTH HEIGHT CAPTURE REPLAY-OPTIONS...
  local name=$1 width=$2 height=$3 capture
  capture=$(realpath --relative-to="${root}" "$4")
  shift 4
  (cd "${root}" && "${sim}" replay "${capture}" "$@" --no-summary --svg "${out}/${name}.svg")
  local profile
  profile=$(mktemp -d)
  chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
    --disable-background-networking --disable-component-update --disable-sync \
    --hide-scrollbars --user-data-dir="${profile}" --screenshot="${out}/${name}.png" \
    --window-size="${width},${height}" "file://${out}/${name}.svg" 2>/dev/null
  rm -rf "${profile}"
  echo "${out}/${name}.png"
}

shoot long-capture 1300 760 "${out}/long-capture.log"
shoot phone-log 1300 900 "${root}/examples/phone-logs/gnsslogger-pixel7-android14.txt"
shoot daemon-restart 1300 900 "${root}/examples/captures/gpsd-rx210.log" \
  --kill-at 20 --restart-at 35
