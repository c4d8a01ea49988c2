#!/usr/bin/env bash
# The schedule explorer's throughput over the explore suite: every tests/explore/*.scn
# explored with `zdgnss-sim explore --measure`, one file after another, in the explore
# build the test command explores with. Prints each file's runs per second and the cost of
# a bare fork and _exit of the same binary timed in the same run, then the whole suite's
# runs over wall seconds against the bare fork. No target is judged: the figures go into
# docs/performance.md.
#
# Usage: scripts/explore-throughput.sh [FILE.scn...]
#
# Other work on the machine slows both figures; the load average before and after is
# printed with them.
set -euo pipefail
cd "$(dirname "$0")/.."

files=("$@")
((${#files[@]})) || files=(tests/explore/*.scn)

cmake --preset explore >/dev/null
cmake --build --preset explore -j2 --target zdgnss-sim >/dev/null
sim=build/explore/sim/zdgnss-sim
# As the explore tests run: every symbol bound before the block's server forks, so that no
# run binds a library function again after its fork.
export LD_BIND_NOW=1

echo "load average before: $(cut -d' ' -f1-3 /proc/loadavg)"
measures=$(mktemp)
trap 'rm -f "$measures"' EXIT
for file in "${files[@]}"; do
  "$sim" explore --measure "$file" | grep '^measure: ' | tee -a "$measures" | head -n 1
done
echo "load average after: $(cut -d' ' -f1-3 /proc/loadavg)"

# Sums the runs and seconds of every file, and the bare forks' milliseconds weighted by
# each file's seconds, so that the comparison holds over the same stretch of time.
awk '
/ runs in / {
  for (i = 1; i <= NF; ++i) {
    if ($i == "runs" && $(i + 1) == "in") runs += $(i - 1)
    if ($i == "s," && $(i - 2) == "in") { seconds += $(i - 1); last = $(i - 1) }
  }
}
/ bare fork and _exit / {
  for (i = 1; i <= NF; ++i) if ($i == "ms" && $(i + 1) == "each,") bare += $(i - 1) * last
}
END {
  if (seconds == 0) exit 1
  each = bare / seconds
  printf "suite: %d runs in %.2f s, %.0f runs/s\n", runs, seconds, runs / seconds
  printf "suite: bare fork and _exit of the same binary: %.3f ms each, %.0f/s\n", each, 1000 / each
  printf "suite: a run takes %.2f times a bare fork and _exit\n", seconds * 1000 / runs / each
}' "$measures"
