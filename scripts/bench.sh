#!/usr/bin/env bash
# Builds the optimised "bench" preset (GCC, libstdc++, Release), runs the
# benchmarks and prints their figures against the targets, after a description
# of the machine. Exits non-zero when a figure misses its target.
#
# Usage: scripts/bench.sh [--min-time SECONDS] [--update-docs]
#   --min-time     time each feed path is measured for, per repetition (default 0.5)
#   --update-docs  also writes the machine and the table into docs/performance.md
#
# Figures from a machine that other work keeps busy are noisy, so each feed path
# is measured in five repetitions, shuffled among those of the other paths, and
# the look-up in three; the table takes the median of the repetitions. A
# look-up waits through nine real one-second pauses, so a run takes about two
# minutes.
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
cmake --build --preset bench -j2
build=build/bench
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
  echo "- Load average (1, 5, 15 min) before the run: ${load}"
  if awk -v l="${load%% *}" -v c="$cores" 'BEGIN { exit !(l >= c) }'; then
    echo "- Taken under load: other work kept the cores busy (1-minute load average >= cores)"
  fi
}

before=$(machine)
"$build/bench/bench_feed" --benchmark_min_time="$min_time" \
  --benchmark_repetitions=5 --benchmark_enable_random_interleaving=true \
  --benchmark_out="$results/feed.json" --benchmark_out_format=json
"$build/bench/bench_lookup" --benchmark_repetitions=3 \
  --benchmark_out="$results/lookup.json" --benchmark_out_format=json
after="- Load average after the run: $(cut -d' ' -f1-3 /proc/loadavg)"

status=0
table=$(python3 bench/bench_table.py --feed "$results/feed.json" --lookup "$results/lookup.json") ||
  status=$?
report=$(printf '%s\n%s\n\n%s\n' "$before" "$after" "$table")
echo
echo "$report"

if $update_docs; then
  doc=docs/performance.md
  python3 - "$doc" "$report" <<'PY'
import sys
path, report = sys.argv[1], sys.argv[2]
begin, end = "<!-- bench.sh: begin -->", "<!-- bench.sh: end -->"
text = open(path, encoding="utf-8").read()
head, rest = text.split(begin, 1)
_, tail = rest.split(end, 1)
open(path, "w", encoding="utf-8").write(head + begin + "\n" + report + "\n" + end + tail)
PY
  echo "wrote $doc"
fi
exit "$status"
