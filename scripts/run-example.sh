#!/usr/bin/env bash
# The main job: builds the library and zdgnss-sim, then replays a real receiver capture
# through the library (with a fusion-daemon crash and restart in the middle), prints the
# summary and writes the timeline picture.
# Usage: scripts/run-example.sh [CAPTURE [REPLAY OPTIONS...]]
#   CAPTURE: an NMEA capture, or a phone's GnssLogger/GPSTest log (examples/phone-logs/)
#   default: examples/captures/gpsd-haicom-305N.log --kill-at 40 --restart-at 55
#   picture: build/replay-timeline.svg
#   A .scn file instead runs that scenario and prints its transcript.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset default >/dev/null
cmake --build --preset default -j "$(nproc)" --target zdgnss-sim
sim=build/default/sim/zdgnss-sim
if [[ "${1:-}" == *.scn ]]; then
  exec "${sim}" --check "$1"
fi
capture="${1:-examples/captures/gpsd-haicom-305N.log}"
shift || true
options=("$@")
((${#options[@]})) || options=(--kill-at 40 --restart-at 55)
svg=build/replay-timeline.svg
"${sim}" replay "${capture}" "${options[@]}" --svg "${svg}"
echo "timeline picture: ${svg}"
