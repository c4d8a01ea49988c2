#!/usr/bin/env python3
"""Prints one table of every benchmark figure against its target, from the JSON
files that the benchmark binaries wrote (--benchmark_out). The table is
Markdown, so the same text reads in a terminal and in docs/performance.md.

Columns: figure | measured | floor | ratio | target | ok?
Exit status: 0 all targets met, 1 a target missed, 2 a figure missing from the JSON.
"""
import argparse
import json
import math
import sys

FEED_RATIO_TARGET = 1.25
LOOKUP_RATIO_TARGET = 2.0
LOOKUP_PAUSES = 9  # ten look-up attempts, a pause between each two
REPLAY_TARGET_SECONDS = 1.0

# Figure 1: the feed paths, in the order of the table.
FEED_PATHS = [
    ("sendLocationDataToTarvi.fresh", "sendLocationDataToTarvi, fused fix fresh (1 line)"),
    ("sendLocationDataToTarvi.reverting", "sendLocationDataToTarvi, reverting to GNSS (2 lines)"),
    ("send_nmea_update_to_tarvi.rmc", "send_nmea_update_to_tarvi, real $GPRMC sentence"),
    ("sendSvInfo_1_0.64", "sendSvInfo 1.0, 64 entries"),
    ("sendSvInfo_2_0.64", "sendSvInfo 2.0, 64 entries"),
    ("sendSvInfo_1_0+addSvList_1_0.64", "sendSvInfo 1.0 + addSvList 1.0, 64 entries, padded"),
    ("addSvList_2_0.64", "addSvList 2.0, 64 stored entries, reported"),
    ("sendSvInfo_2_0+addSvList_2_0.64", "sendSvInfo 2.0 + addSvList 2.0, 64 entries"),
    ("sendSvInfo_2_0+addSvList_2_0.10", "sendSvInfo 2.0 + addSvList 2.0, 10 entries, padded"),
    ("reportFusdLocation.forwarded", "reportFusdLocation, forwarded to the framework"),
    ("qttff_location_sourcetype.fusion_daemon", "qttff_location_sourcetype"),
]

# Figure 2: paths whose allocations per call must be zero (after the first call).
ZERO_ALLOCATION_PATHS = [
    ("send_nmea_update_to_tarvi.rmc", "NMEA path"),
    ("sendSvInfo_1_0+addSvList_1_0.64", "1.0 satellite path (sendSvInfo + addSvList)"),
    ("sendSvInfo_2_0+addSvList_2_0.64", "2.0 satellite path, 64 entries"),
    ("sendSvInfo_2_0+addSvList_2_0.10", "2.0 satellite path, 10 entries padded to 15"),
    ("addSvList_2_0.64", "addSvList 2.0 alone, 64 entries"),
]


def load(path):
    if not path:
        return []
    with open(path, encoding="utf-8") as f:
        return json.load(f)["benchmarks"]


def find(benchmarks, prefix):
    """The run (or, with repetitions, the median aggregate) named by prefix."""
    runs = [b for b in benchmarks if b["name"].startswith(prefix + "/") or b["name"] == prefix]
    medians = [b for b in runs if b.get("aggregate_name") == "median"]
    if medians:
        return medians[0]
    plain = [b for b in runs if b.get("run_type", "iteration") == "iteration"]
    return plain[0] if plain else None


def ns(value):
    if value is None or (isinstance(value, float) and math.isnan(value)):
        return "n/a"
    if value >= 10000:
        return "%.1f µs" % (value / 1000)
    if value < 10:
        return "%.1f ns" % value
    return "%.0f ns" % value


def verdict(good):
    return "yes" if good else "NO"


def feed_rows(feed):
    rows = []
    for key, title in FEED_PATHS:
        run = find(feed, "feed/" + key)
        if run is None:
            rows.append(["1 " + title, "missing", "", "", "≤ %.2f×" % FEED_RATIO_TARGET, "NO"])
            continue
        ratio = run["ratio"]
        rows.append(["1 " + title, ns(run["library_ns"]), ns(run["floor_ns"]), "%.3f×" % ratio,
                     "≤ %.2f×" % FEED_RATIO_TARGET, verdict(ratio <= FEED_RATIO_TARGET)])
    return rows


def allocation_text(value):
    if value < 0:
        return "not counted"
    return "%g" % round(value, 3)


def allocation_rows(feed):
    rows = []
    for key, title in ZERO_ALLOCATION_PATHS:
        run = find(feed, "feed/" + key)
        if run is None:
            rows.append(["2 allocations/call, " + title, "missing", "", "", "0", "NO"])
            continue
        library, floor = run["library_allocs"], run["floor_allocs"]
        rows.append(["2 allocations/call, " + title, allocation_text(library),
                     allocation_text(floor), "", "0", verdict(library == 0)])
    others = [find(feed, "feed/" + key) for key, _ in FEED_PATHS
              if key not in dict(ZERO_ALLOCATION_PATHS)]
    others = [run["library_allocs"] for run in others if run is not None]
    if others:
        rows.append(["2 allocations/call, every other feed path (most)",
                     allocation_text(max(others)), "", "", "none set", ""])
    return rows


def lookup_rows(lookup):
    run = find(lookup, "lookup/feed_and_query_latency")
    if run is None:
        return [["3 p99 during a daemon look-up", "missing", "", "", "≤ 2× idle p99", "NO"]]
    pauses = int(run["lookup_pauses"])
    seconds = run["lookup_seconds"]
    real_loop = pauses == LOOKUP_PAUSES and seconds >= LOOKUP_PAUSES * 0.95
    loop_note = "%d pauses, %.1f s" % (pauses, seconds)
    rows = []
    for kind, title in (("feed", "feed calls"), ("query", "queries")):
        busy, idle = run[kind + "_p99_lookup"], run[kind + "_p99_idle"]
        ratio = busy / idle if idle > 0 else float("inf")
        rows.append(["3 p99 of %s during a look-up (%s)" % (title, loop_note), ns(busy),
                     ns(idle) + " idle", "%.2f×" % ratio, "≤ %.0f× idle p99" % LOOKUP_RATIO_TARGET,
                     verdict(real_loop and ratio <= LOOKUP_RATIO_TARGET)])
    return rows


# ---- Figure 4: replay throughput -----------------------------------------------------
# Filled when a `bench_replay` binary exists (scripts/bench.sh then builds and runs it and
# passes its JSON with --replay). Expected of it: a Google Benchmark binary whose benchmarks
# named "replay..." each replay one hour of a real capture through the library per iteration,
# with no transcript; one row each, named by what follows the first "/". If a benchmark sets a
# counter `cycles` (one-second cycles per iteration) or `capture_seconds`, its time is scaled
# to exactly one hour of capture.
def replay_rows(replay, replay_built):
    title = "4 replay of one hour of capture, no transcript"
    target = "< %.0f s" % REPLAY_TARGET_SECONDS
    if not replay_built:
        return [[title, "pending: no bench_replay binary yet", "", "", target, ""]]
    runs = [b for b in replay if b["name"].startswith("replay")
            and b.get("run_type", "iteration") == "iteration"]
    if not runs:
        return [[title, "bench_replay reported no replay benchmark", "", "", target, "NO"]]
    rows = []
    for run in runs:
        parts = run["name"].split("/")
        capture = parts[1] if len(parts) > 1 else parts[0]
        scale = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}[run.get("time_unit", "ns")]
        seconds = run["real_time"] * scale
        covered = run.get("capture_seconds") or run.get("cycles")
        if covered:
            seconds *= 3600.0 / covered
        rows.append(["%s, %s" % (title, capture), "%.3f s" % seconds, "",
                     "%.2f× target" % (seconds / REPLAY_TARGET_SECONDS), target,
                     verdict(seconds < REPLAY_TARGET_SECONDS)])
    return rows


def print_table(rows):
    header = ["figure", "measured", "floor", "ratio", "target", "ok?"]
    print("| " + " | ".join(header) + " |")
    print("|" + "|".join("---" for _ in header) + "|")
    for row in rows:
        print("| " + " | ".join(row) + " |")


# Costs inside figure 1 that any implementation pays, printed under the table.
PARTS = [
    ("parts/pinned_read", "one handle read of the library (the thread pinned, the published"
     " pointer loaded, the thread unpinned; measured as `isFDSupport`)"),
    ("parts/memset_s_rmc_buffer", "clearing the 256-byte NMEA buffer with `memset_s`"),
    ("parts/memcpy_s_rmc_sentence", "copying the RMC sentence into it with `memcpy_s`"),
    ("parts/memset_s_sv_record", "clearing the 1540-byte 1.0 satellite record with `memset_s`"),
    ("parts/memcpy_s_sv_record", "copying a 1.0 satellite report into it with `memcpy_s`"),
]


def print_parts(feed):
    found = [(find(feed, name), text) for name, text in PARTS]
    found = [(entry, text) for entry, text in found if entry is not None]
    if not found:
        return
    print("\nFor reading figure 1, CPU time of parts that every implementation of the paths pays:")
    for entry, text in found:
        print("- %s: %s" % (text, ns(entry["cpu_time"])))


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--feed", required=True, help="bench_feed JSON")
    parser.add_argument("--lookup", help="bench_lookup JSON")
    parser.add_argument("--replay", help="bench_replay JSON, when that binary exists")
    parser.add_argument("--allow-misses", action="store_true",
                        help="exit 0 when figures miss their targets (unoptimised smoke runs)")
    args = parser.parse_args()
    feed = load(args.feed)
    rows = feed_rows(feed) + allocation_rows(feed) + lookup_rows(load(args.lookup))
    rows += replay_rows(load(args.replay), args.replay is not None)
    print_table(rows)
    print_parts(feed)
    if any(row[1] == "missing" for row in rows):
        return 2
    missed = any(row[-1] == "NO" for row in rows)
    return 1 if missed and not args.allow_misses else 0


if __name__ == "__main__":
    sys.exit(main())
