#!/usr/bin/env bash
# Injects each concurrency fault of tests/explore/faults/ into the library, one at a time,
# and runs the explore scenarios against it in the explore build. A fault is found when
# it breaks some scenario's `explore --check`: a finding the scenario does not declare, or
# another number of the distinct findings it declares. With --tsan it
# also runs, for each fault, the same scenarios on real threads and the chaos test in the
# tsan build, to show which faults those catch. Not part of the test command: each fault
# rebuilds the library. Run it after changing the explorer or the library's locking.
#
# With --generated it runs the generated pairs of tests/explore/generated alone, the
# hand-written scenarios left out. A fault is found by the first block, cheapest first,
# whose findings are other than the kept hazards declare and other than the unchanged
# library's (the build copied before the first fault). A fault whose patch says it is a
# plain-memory race is left to ThreadSanitizer: with --tsan, the generated blocks are played
# on real threads in the tsan build until one fails.
# Usage: scripts/explore-faults.sh [--tsan] [--generated] [FAULT.patch...]
set -euo pipefail
cd "$(dirname "$0")/.."

tsan=false
generated=false
while [[ "${1:-}" == --* ]]; do
  case "$1" in
    --tsan) tsan=true ;;
    --generated) generated=true ;;
    *) echo "usage: scripts/explore-faults.sh [--tsan] [--generated] [FAULT.patch...]" >&2; exit 2 ;;
  esac
  shift
done
patches=("$@")
((${#patches[@]})) || patches=(tests/explore/faults/*.patch)

if ! git diff --quiet -- provider hal; then
  echo "explore-faults: provider/ or hal/ has uncommitted changes" >&2
  exit 2
fi
trap 'git checkout -- provider hal' EXIT
sim=build/explore/sim/zdgnss-sim
cmake --preset explore >/dev/null
presets=(explore)
if $tsan; then cmake --preset tsan >/dev/null; presets+=(tsan); fi

# Builds quietly; a failed build (a fault that no longer compiles) prints its errors.
quiet_build() {
  local log
  if ! log=$(cmake --build --preset "$1" -j2 --target "${@:2}" 2>&1); then
    tail -n 30 <<<"$log" >&2
    echo "explore-faults: the $1 build failed" >&2
    return 1
  fi
}

build() {
  quiet_build explore zdgnss-sim
  if $tsan; then quiet_build tsan zdgnss-sim chaos_test; fi
}

# The finding lines of one explore scenario.
findings() {
  "$sim" explore "$1" 2>&1 | grep ': finding: ' || true
}

# The first scenario whose check the fault breaks (a finding it does not declare, or a
# different number of the findings it declares), with that scenario's first finding that
# the unchanged library does not give. A fault that only adds a scheduling point renumbers
# the decisions of known findings without changing them, and so is not counted as found.
first_new_finding() {
  local scenario out new verdict
  for scenario in tests/explore/*.scn; do
    if out=$("$sim" explore --check "$scenario" 2>&1); then continue; fi
    new=$(comm -13 <(sort "$baseline/$(basename "$scenario")") \
      <(grep ': finding: ' <<<"$out" | sort) | head -n 1)
    verdict=$(grep -E ': declared .*, found ' <<<"$out" | head -n 1 | sed 's/^[^ ]* //')
    echo "${new:-$(basename "$scenario")}${verdict:+ [$verdict]}"
    return
  done
}

# What the tsan build's real-thread runs say about the fault.
tsan_verdict() {
  local races=0 chaos=pass
  for scenario in tests/explore/*.scn; do
    for _ in 1 2 3; do
      if ! TSAN_OPTIONS="halt_on_error=1 suppressions=$PWD/host/tsan.supp" timeout 120 \
          build/tsan/sim/zdgnss-sim --quiet --check "$scenario" >/dev/null 2>&1; then
        races=$((races + 1))
        break
      fi
    done
  done
  TSAN_OPTIONS="halt_on_error=1 suppressions=$PWD/host/tsan.supp" timeout 300 \
    build/tsan/tests/library/chaos_test >/dev/null 2>&1 || chaos=fail
  echo "real-thread scenarios failing under tsan (a race, or a hang past 120 s): ${races}; chaos test under tsan: ${chaos}"
}

plain_memory_race() {
  grep -q '^# A plain-memory race' "$1"
}

# Generated mode: the first generated block that shows the fault, or nothing.
generated_explorer_verdict() {
  local out
  if out=$("$sim" explore --generate --no-hand --check --stop-at-first --changed-first \
      --baseline "$baseline/zdgnss-sim" --footprint-cache "$baseline/footprints" 2>&1); then
    return
  fi
  # The block's failed check, and what the unchanged build gave the same block.
  local failed
  failed=$(grep -E ': check failed: ' <<<"$out" | head -n 2 || true)
  [[ -n "$failed" ]] || return 0
  echo "$(head -n 1 <<<"$failed" | cut -d' ' -f1) $(sed 's/^[^ ]*: check failed: //' <<<"$failed" | paste -sd ';' -)"
}

generated_tsan_verdict() {
  local out
  if out=$(TSAN_OPTIONS="halt_on_error=1 atexit_sleep_ms=0 suppressions=$PWD/host/tsan.supp" \
      build/tsan/sim/zdgnss-sim generate --real 1 --stop-at-first \
      --footprint-cache "$baseline/footprints" 2>&1); then
    return
  fi
  grep -E 'real-thread run .* failed' <<<"$out" | head -n 1 | sed 's/; its standard error://'
}

build
baseline=$(mktemp -d)
if $generated; then
  # The unchanged build, with the shared libraries it loads, for telling a fault's findings
  # from the library's own; and the footprints both builds generate their blocks from.
  mkdir "$baseline/bin"
  cp "$sim" build/explore/libzdgnssprovider.so build/explore/host/libzdhidl.so "$baseline/bin"
  printf '#!/bin/sh\nLD_LIBRARY_PATH="%s/bin" exec "%s/bin/zdgnss-sim" "$@"\n' \
    "$baseline" "$baseline" >"$baseline/zdgnss-sim"
  chmod +x "$baseline/zdgnss-sim"
  "$baseline/zdgnss-sim" generate --footprint-cache "$baseline/footprints" --list >/dev/null
else
  for scenario in tests/explore/*.scn; do findings "$scenario" >"$baseline/$(basename "$scenario")"; done
fi
status=0
for patch in "${patches[@]}"; do
  git apply "$patch"
  build
  echo "== $(basename "$patch" .patch)"
  if $generated && plain_memory_race "$patch" && ! $tsan; then
    echo "   not judged: a plain-memory race, which only ThreadSanitizer sees (run with --tsan)"
    git checkout -- provider hal
    continue
  elif $generated && plain_memory_race "$patch"; then
    new=$(generated_tsan_verdict)
    new=${new:+by ThreadSanitizer on real threads: $new}
  elif $generated; then
    new=$(generated_explorer_verdict)
  else
    new=$(first_new_finding)
  fi
  if [[ -n "$new" ]]; then
    echo "   found: $new"
  else
    echo "   NOT FOUND"
    status=1
  fi
  if $tsan && ! $generated; then echo "   $(tsan_verdict)"; fi
  git checkout -- provider hal
done
rm -rf "$baseline"
build
exit "$status"
