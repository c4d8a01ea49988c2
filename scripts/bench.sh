#!/usr/bin/env bash
# Builds the optimised "bench" preset, runs the benchmarks and prints one table
# of every figure with its target, after a description of the machine.
#
# Usage: scripts/bench.sh [--min-time SECONDS] [--update-docs]
#   --min-time     time each feed path is measured for, per repetition (default 0.5)
#   --update-docs  also writes the machine and the table into docs/performance.md
#
# Each feed path is measured three times, the repetitions of all paths shuffled
# together; the table takes the median of the three.
# The look-up figure waits through nine real one-second pauses, so a run takes
# about a minute. Exits non-zero when a figure misses its target.
set -euo pipefail
cd "$(dirname "$0")/.."

min_time=0.5
update_docs=false
while (($#)); do
  case "$1" in
    --min-time) min_time="$2"; shift 2 ;;
    --update-docs) update_docs=true; shift ;;
    *) echo "usage: scripts/bench.sh [--min-time SECONDS] [--update-docs]" >&2; exit 2 ;;
  esac
done

scripts/setup.sh
cmake --preset bench >/dev/null
cmake --build --preset bench -j "$(nproc)"
build=build/bench
# Figure 4's driver, once it exists: built and run when the target is there.
replay_bin=""
targets=$(cmake --build "$build" --target help)
if grep -q '^bench_replay:' <<<"$targets"; then
  cmake --build "$build" --target bench_replay -j "$(nproc)"
  replay_bin=$(find "$build" -name bench_replay -type f -perm -u+x | head -n 1)
fi

results="$build/results"
mkdir -p "$results"

machine() {
  local cpu cores compiler load
  cpu=$(grep -m1 '^model name' /proc/cpuinfo | cut -d: -f2- | sed 's/^ *//')
  cores=$(nproc)
  compiler=$(g++ --version | head -n 1)
  load=$(cut -d' ' -f1-3 /proc/loadavg)
  echo "- CPU: ${cpu}, ${cores} cores"
  echo "- Compiler: ${compiler}, Release (-O3)"
  echo "- Date: $(date -u '+%Y-%m-%d %H:%M UTC')"
  echo "- Load average (1, 5, 15 min) $1: ${load}"
  if awk -v l="${load%% *}" -v c="$cores" 'BEGIN { exit !(l >= c) }'; then
    echo "- Taken under load: other work kept the cores busy (1-minute load average >= cores)"
  fi
}

before=$(machine "before the run")
"$build/bench/bench_feed" --benchmark_min_time="$min_time" \
  --benchmark_repetitions=3 --benchmark_enable_random_interleaving=true \
  --benchmark_out="$results/feed.json" --benchmark_out_format=json
"$build/bench/bench_lookup" --benchmark_out="$results/lookup.json" --benchmark_out_format=json
table_args=(--feed "$results/feed.json" --lookup "$results/lookup.json")
if [ -n "$replay_bin" ]; then
  "$replay_bin" --benchmark_out="$results/replay.json" --benchmark_out_format=json
  table_args+=(--replay "$results/replay.json")
fi
after="- Load average after the run: $(cut -d' ' -f1-3 /proc/loadavg)"

status=0
table=$(python3 bench/bench_table.py "${table_args[@]}") || status=$?
report=$(printf '%s\n%s\n\n%s\n' "$before" "$after" "$table")
echo
echo "$report"

if $update_docs; then
  doc=docs/performance.md
  python3 - "$doc" "$report" <<'EOF'
import sys
path, report = sys.argv[1], sys.argv[2]
begin, end = "<!-- bench.sh: begin -->", "<!-- bench.sh: end -->"
text = open(path, encoding="utf-8").read()
head, rest = text.split(begin, 1)
_, tail = rest.split(end, 1)
open(path, "w", encoding="utf-8").write(head + begin + "\n" + report + "\n" + end + tail)
EOF
  echo "wrote $doc"
fi
exit "$status"
