"""End-to-end checks of `zdgnss-sim replay` on the real captures.

Usage: check_replay.py ZDGNSS_SIM CAPTURE_DIR WORK_DIR
"""

import glob
import os
import re
import shutil
import subprocess
import sys
import unittest
import xml.etree.ElementTree as ElementTree

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import capture_tally  # noqa: E402
import epoch_count  # noqa: E402

SIM, CAPTURES, WORK = sys.argv[1:4] if len(sys.argv) >= 4 else (None, None, None)
SVG_NS = "{http://www.w3.org/2000/svg}"
FIGURE = re.compile(r"^\s*(\S.*?)\s{2,}(-?\d+)\s*$")


def capture(name):
    return os.path.join(CAPTURES, name)


def replay(path, *options):
    result = subprocess.run([SIM, "replay", path, *options], capture_output=True, text=True,
                            timeout=300)
    return result


def figures(summary):
    found = {}
    for line in summary.splitlines():
        match = FIGURE.match(line)
        if match:
            found[match.group(1)] = int(match.group(2))
    return found


# Summary figures that count epochs, and the class that marks such an epoch's row.
ROW_MARKS = {"epochs source receiver": "src-receiver", "epochs source fused": "src-fused",
             "epochs source both": "src-both", "epochs source none": "src-none",
             "satellite lists padded": "pad", "epochs daemon down": "down",
             "daemon deaths": "died", "reconnections": "back", "batching replays": "batch"}


def epoch_rows(tree):
    return [g for g in tree.iter(SVG_NS + "g") if g.get("class") == "epoch"]


def rows_marked(tree, css_class):
    return sum(1 for row in epoch_rows(tree)
               if any(e.get("class") == css_class for e in row.iter()))


def padded_numbers(tree):
    return [e.text for e in tree.iter(SVG_NS + "text") if e.get("class") == "padded"]


class EveryCapture(unittest.TestCase):
    def test_every_capture_replays_in_each_mode_and_draws_one_row_per_epoch(self):
        paths = sorted(glob.glob(os.path.join(CAPTURES, "*.log")))
        self.assertEqual(len(paths), 9)
        modes = [[], ["--hal", "1.0"], ["--burst", "--jitter", "300"]]
        for path in paths:
            for mode in modes:
                svg = os.path.join(WORK, os.path.basename(path) + ".svg")
                result = replay(path, *mode, "--svg", svg)
                label = "%s %s" % (os.path.basename(path), " ".join(mode))
                self.assertEqual(result.returncode, 0, label + "\n" + result.stderr)
                counts = figures(result.stdout)
                self.assertGreater(counts["epochs"], 0, label)
                tree = ElementTree.parse(svg)  # raises on XML that is not well formed
                rows = epoch_rows(tree)
                self.assertEqual(len(rows), counts["epochs"], label)
                self.assertEqual([int(g.get("data-index")) for g in rows],
                                 list(range(counts["epochs"])), label)
                self.assertMarksMatch(tree, counts, label)

    def assertMarksMatch(self, tree, counts, label):
        for figure, css_class in ROW_MARKS.items():
            self.assertEqual(rows_marked(tree, css_class), counts[figure],
                             "%s: %s" % (label, figure))
        # A padded row shows what the framework got: the receiver's count plus five entries.
        for shown in padded_numbers(tree):
            before, after = (int(n) for n in shown.split(" \u2192 "))
            self.assertEqual(after, before + 5, "%s: padded row shows %s" % (label, shown))

    def test_capture_name_stays_text(self):
        name = "<svg onload=\"x\">&amp;'.log"
        path = os.path.join(WORK, name)
        shutil.copy(capture("gpsd-mtk-3301.log"), path)
        svg = os.path.join(WORK, "hostile.svg")
        result = replay(path, "--svg", svg)
        self.assertEqual(result.returncode, 0, result.stderr)
        tree = ElementTree.parse(svg)
        heading = [g for g in tree.iter(SVG_NS + "g") if g.get("class") == "heading"]
        self.assertEqual(len(heading), 1)
        self.assertIn(name, "".join(heading[0].itertext()))


class CountsAgainstTally(unittest.TestCase):
    """Per-sentence replays against a count of the capture made without the replay's code."""

    RECEIVERS = ["gpsd-haicom-305N.log", "gpsd-quectel.log", "gpsd-ublox-neo-m9n-nmea.log",
                 "gpsd-telit-pls83-w.log", "gpsd-mtk-3301.log", "gpsd-rx210.log",
                 "gpsd-telit-he910.log"]

    def test_counts(self):
        for name in self.RECEIVERS:
            with self.subTest(capture=name):
                expected = capture_tally.tally(capture(name))
                result = replay(capture(name), "--coast", "0")
                self.assertEqual(result.returncode, 0, result.stderr)
                got = figures(result.stdout)
                self.assertEqual(got["sentences"], expected["sentences"])
                self.assertEqual(got["NMEA chunks sent"], expected["sentences"])
                epochs = epoch_count.count(capture(name))
                if epochs != "ambiguous":
                    self.assertEqual(got["epochs"], epochs)
                self.assertEqual(got["fixes"], expected["fixes"])
                self.assertEqual(got["RMC valid sent true"], expected["rmc_true"])
                self.assertEqual(got["RMC valid sent false"], expected["rmc_false"])
                self.assertEqual(got.get("rejected: no $GPRMC sentence", 0),
                                 expected["no_gprmc"])
                self.assertEqual(got.get("rejected: RMC tail of 256+ characters", 0),
                                 expected["rmc_too_long"])
                # Without coasting, every fix is answered by exactly one fused location
                # within its second: each is either forwarded or dropped by the interval.
                self.assertEqual(got["fused locations forwarded"] +
                                 got["fused locations dropped (interval rule)"],
                                 expected["fixes"])
                # The first fix of the run has no fused location near it.
                self.assertGreaterEqual(got["locations reported by the provider"], 1)


class DaemonCrash(unittest.TestCase):
    def test_kill_and_restart_mid_replay_reconnects_and_replays_batching(self):
        svg = os.path.join(WORK, "crash.svg")
        result = replay(capture("gpsd-haicom-305N.log"), "--kill-at", "30", "--restart-at",
                        "40", "--transcript", "--svg", svg)
        self.assertEqual(result.returncode, 0, result.stderr)
        got = figures(result.stdout)
        tree = ElementTree.parse(svg)
        self.assertEqual([rows_marked(tree, c) for c in ("down", "died", "back", "batch")],
                         [got["epochs daemon down"], 1, 1, 1])
        # The receiver skips some seconds: fewer epochs than seconds end with the daemon down.
        self.assertGreater(got["epochs daemon down"], 5)
        self.assertEqual(got["daemon deaths"], 1)
        self.assertEqual(got["reconnections"], 1)
        self.assertEqual(got["batching replays"], 1)
        self.assertEqual(got["seconds daemon down"], 10)
        self.assertGreater(got.get("rejected: daemon not connected", 0), 0)
        lines = result.stdout.splitlines()

        def first(text, start=0):
            for i in range(start, len(lines)):
                if text in lines[i]:
                    return i
            self.fail("no line with %r after line %d" % (text, start))

        died = first("fusd hidl service was dead, start clear")
        back = first("replay daemon registers again at 40000 ms", died)
        reconnected = first("get fusd service successful", back)
        start = first("fusd IGnssBatchingInterface.start(", reconnected)
        first("run fusd batching start [1]", start)
        # Fused locations reach the framework again after the restart.
        first("get location from Tarvi1.5", start)

    def test_overview_covers_the_run_and_marks_the_death_and_return(self):
        svg = os.path.join(WORK, "overview.svg")
        result = replay(capture("gpsd-haicom-305N.log"), "--kill-at", "30", "--restart-at",
                        "40", "--svg", svg)
        self.assertEqual(result.returncode, 0, result.stderr)
        overview = [g for g in ElementTree.parse(svg).iter(SVG_NS + "g")
                    if g.get("class") == "overview"]
        self.assertEqual(len(overview), 1)
        rects = list(overview[0].iter(SVG_NS + "rect"))

        def lane(*classes):
            found = [r for r in rects if r.get("class") in classes]
            top = min(float(r.get("y")) for r in found)  # the first lane these classes fill
            return [(float(r.get("x")), float(r.get("width"))) for r in found
                    if float(r.get("y")) == top]

        daemon = sorted(lane("up", "down"))
        # The daemon lane is three stretches end to end: up, down from 30 s to 40 s, up.
        self.assertEqual([r.get("class") for r in rects if r.get("class") in ("up", "down")],
                         ["up", "down", "up"])
        for (x, width), (next_x, _) in zip(daemon, daemon[1:]):
            self.assertAlmostEqual(x + width, next_x, delta=0.2)
        source = sorted(lane("src-receiver", "src-fused", "src-both", "src-none"))
        self.assertAlmostEqual(source[0][0], daemon[0][0], delta=0.2)
        self.assertAlmostEqual(sum(width for _, width in source),
                               sum(width for _, width in daemon), delta=0.1 * len(source))
        seconds = figures(result.stdout)["seconds replayed"]
        down = [width for x, width in daemon][1]
        self.assertAlmostEqual(down / sum(width for _, width in daemon), 10 / seconds, delta=0.01)
        self.assertEqual((len(lane("died-mark")), len(lane("back-mark"))), (1, 1))

    def test_a_death_and_return_in_one_epoch_stay_in_their_column(self):
        svg = os.path.join(WORK, "same-second.svg")
        replay(capture("gpsd-haicom-305N.log"), "--kill-at", "30", "--restart-at", "30",
               "--svg", svg)
        row = [g for g in epoch_rows(ElementTree.parse(svg))
               if any(e.get("class") == "died" for e in g.iter())][0]
        texts = {e.get("class"): float(e.get("x")) for e in row.iter(SVG_NS + "text")}
        events_end = texts["died"] + 6.7 * len("died reconnected +batching")
        self.assertGreaterEqual(min(x for c, x in texts.items() if c in ("rej", "dim")),
                                events_end)

    def test_without_batching_nothing_is_replayed(self):
        result = replay(capture("gpsd-haicom-305N.log"), "--kill-at", "5", "--restart-at", "6",
                        "--no-batching")
        got = figures(result.stdout)
        self.assertEqual((got["reconnections"], got["batching replays"]), (1, 0))


class CommandLine(unittest.TestCase):
    def test_bad_command_lines_exit_2(self):
        for words in (["--hal", "3.0"], ["--latency"], ["--kill-at", "-1"], ["--frobnicate"]):
            self.assertEqual(replay(capture("gpsd-mtk-3301.log"), *words).returncode, 2, words)
        self.assertEqual(replay(os.path.join(WORK, "missing.log")).returncode, 2)

    def test_a_path_that_is_not_a_regular_file_exits_2_with_one_line(self):
        for path in (CAPTURES, "/dev/null", os.path.join(WORK, "missing.log")):
            result = replay(path)
            self.assertEqual((result.returncode, result.stdout), (2, ""), path)
            self.assertEqual(len(result.stderr.splitlines()), 1, result.stderr)
            self.assertIn(path, result.stderr)

    def test_options_that_do_nothing_are_warned_about(self):
        result = replay(capture("gpsd-mtk-3301.log"), "--kill-at", "2", "--restart-at", "2",
                        "--restart-at", "3", "--kill-at", "9999")
        self.assertEqual(result.returncode, 0, result.stderr)
        warnings = [line for line in result.stderr.splitlines() if "warning" in line]
        self.assertEqual(len(warnings), 3, result.stderr)
        self.assertIn("--kill-at 2 and --restart-at 2", warnings[0])
        self.assertIn("--restart-at 3 does nothing: the daemon is already up", warnings[1])
        self.assertIn("--kill-at 9999 does nothing: the run ends at second", warnings[2])
        self.assertEqual(replay(capture("gpsd-mtk-3301.log"), "--kill-at", "2", "--restart-at",
                                "3").stderr, "")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
