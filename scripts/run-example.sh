#!/usr/bin/env bash
# The main job: builds the library and zdgnss-sim, then replays a real receiver capture
# through the library, prints the summary and writes the timeline picture.
# Usage: scripts/run-example.sh [CAPTURE [REPLAY OPTIONS...]]
#   CAPTURE: an NMEA capture, or a phone's GnssLogger/GPSTest log (examples/phone-logs/);
#            paths are taken from the directory the script is called from
#   default: examples/captures/gpsd-haicom-305N.log, with the fusion daemon killed at
#            second 40 and back at 55 (only for this bundled example, and said so)
#   picture: build/replay-timeline.svg, unless the options name one with --svg
#   A .scn file instead runs that scenario and prints its transcript.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
(
  cd "${root}"
  scripts/setup.sh
  cmake --preset default >/dev/null
  cmake --build --preset default -j "$(nproc)" --target zdgnss-sim
)
sim="${root}/build/default/sim/zdgnss-sim"
if [[ "${1:-}" == *.scn ]]; then
  exec "${sim}" --check "$1"
fi
if (($# == 0)); then
  echo "run-example: the bundled example, with the fusion daemon killed at second 40 and" \
    "back at 55 (--kill-at 40 --restart-at 55)"
  set -- "${root}/examples/captures/gpsd-haicom-305N.log" --kill-at 40 --restart-at 55
fi
svg=()
[[ " $* " == *" --svg "* ]] || svg=(--svg "${root}/build/replay-timeline.svg")
"${sim}" replay "$@" "${svg[@]}"
[[ " $* " == *" --svg "* ]] || echo "timeline picture: ${root}/build/replay-timeline.svg"
