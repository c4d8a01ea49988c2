#!/usr/bin/env bash
# Injects each concurrency fault of tests/explore/faults/ into the library, one at a time,
# and runs the explore scenarios against it in the asan-ubsan build. A fault is found when
# it breaks some scenario's `explore --check`: a finding the scenario does not declare, or
# another number of the distinct findings it declares. With --tsan it
# also runs, for each fault, the same scenarios on real threads and the chaos test in the
# tsan build, to show which faults those catch. Not part of the test command: each fault
# rebuilds the library. Run it after changing the explorer or the library's locking.
# Usage: scripts/explore-faults.sh [--tsan] [FAULT.patch...]
set -euo pipefail
cd "$(dirname "$0")/.."

tsan=false
if [[ "${1:-}" == "--tsan" ]]; then tsan=true; shift; fi
patches=("$@")
((${#patches[@]})) || patches=(tests/explore/faults/*.patch)

if ! git diff --quiet -- provider hal; then
  echo "explore-faults: provider/ or hal/ has uncommitted changes" >&2
  exit 2
fi
trap 'git checkout -- provider hal' EXIT
sim=build/asan-ubsan/sim/zdgnss-sim
cmake --preset asan-ubsan >/dev/null
presets=(asan-ubsan)
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
  quiet_build asan-ubsan zdgnss-sim
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

build
baseline=$(mktemp -d)
for scenario in tests/explore/*.scn; do findings "$scenario" >"$baseline/$(basename "$scenario")"; done
status=0
for patch in "${patches[@]}"; do
  git apply "$patch"
  build
  new=$(first_new_finding)
  echo "== $(basename "$patch" .patch)"
  if [[ -n "$new" ]]; then
    echo "   found: $new"
  else
    echo "   NOT FOUND"
    status=1
  fi
  if $tsan; then echo "   $(tsan_verdict)"; fi
  git checkout -- provider hal
done
rm -rf "$baseline"
build
exit "$status"
