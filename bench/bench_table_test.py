#!/usr/bin/env python3
"""The verdicts of bench_table.py on made-up benchmark output: the own-work gate
compares each row with its floor, so the same run on a machine twice as slow
passes, and own work above its floor fails."""
import contextlib
import io
import json
import math
import os
import sys
import tempfile
import unittest
import unittest.mock

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import bench_table  # noqa: E402


def feed_run(key, floor_ns, own_ns, ratio):
    return {"run_name": "feed/%s/real_time" % key, "aggregate_name": "median",
            "library_ns": floor_ns + own_ns, "floor_ns": floor_ns, "own_ns": own_ns,
            "own_per_floor": ratio, "allocs": 0}


LOOKUP_RUN = {"run_name": "lookup/feed_latency/iterations:1/real_time",
              "aggregate_name": "median", "lookup_pauses": 9, "lookup_seconds": 9.0,
              "p99_ratio": 1.1, "samples_lookup": 1e6, "p99_lookup_ns": 1000,
              "p99_idle_ns": 910}


def run_table(feed_runs):
    with tempfile.TemporaryDirectory() as folder:
        paths = []
        for name, runs in (("feed", feed_runs), ("lookup", [LOOKUP_RUN])):
            path = os.path.join(folder, name + ".json")
            with open(path, "w", encoding="utf-8") as f:
                json.dump({"benchmarks": runs}, f)
            paths.append(path)
        argv = ["bench_table.py", "--feed", paths[0], "--lookup", paths[1]]
        out = io.StringIO()
        with contextlib.redirect_stdout(out), unittest.mock.patch.object(sys, "argv", argv):
            status = bench_table.main()
    return status, out.getvalue()


def every_path(floor_ns, own_ns, ratio):
    return [feed_run(key, floor_ns, own_ns, ratio) for key, _ in bench_table.FEED_PATHS]


class OwnWorkGate(unittest.TestCase):
    def test_a_machine_twice_as_slow_passes_as_the_fast_one_does(self):
        # 260 ns against a 500 ns floor here; 520 against 1000 on the slow machine.
        for scale in (1, 2):
            status, table = run_table(every_path(500 * scale, 260 * scale, 0.52))
            self.assertEqual(status, 0, table)
            self.assertIn("| %d ns | 0.52× floor |" % (260 * scale), table)

    def test_own_work_above_its_floor_fails_the_row(self):
        runs = every_path(500, 100, 0.2)
        runs[3] = feed_run(bench_table.FEED_PATHS[3][0], 100, 105, 1.05)
        status, table = run_table(runs)
        self.assertEqual(status, 1)
        failed = [line for line in table.splitlines() if line.endswith("| NO |")]
        self.assertEqual(len(failed), 1)
        self.assertIn(bench_table.FEED_PATHS[3][1], failed[0])

    def test_a_row_without_a_ratio_fails(self):
        runs = every_path(500, 100, 0.2)
        runs[0]["own_per_floor"] = math.nan
        self.assertEqual(run_table(runs)[0], 1)


if __name__ == "__main__":
    unittest.main()
