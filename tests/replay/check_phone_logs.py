"""End-to-end checks of `zdgnss-sim replay` on the real phone logs (GnssLogger, GPSTest).

Usage: check_phone_logs.py ZDGNSS_SIM PHONE_LOG_DIR WORK_DIR [MORE_LOG_DIR]

MORE_LOG_DIR, when it exists, holds further logs (the shared data folder beside the project):
those that PHONE_LOG_DIR does not ship are replayed too.
"""

import glob
import os
import re
import subprocess
import sys
import unittest
import xml.etree.ElementTree as ElementTree

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import phone_log_tally  # noqa: E402
from check_replay import ROW_MARKS, epoch_rows, figures, rows_marked  # noqa: E402

SIM, LOGS, WORK = sys.argv[1:4] if len(sys.argv) >= 4 else (None, None, None)
MORE_LOGS = sys.argv[4] if len(sys.argv) >= 5 else None
SHIPPED_LOGS = 6  # five text logs and one .nmea file
USED_GPS = re.compile(r"^reports with \d+ GPS used$")
MODES = [[], ["--hal", "1.0"], ["--burst"]]


def replay(path, *options):
    return subprocess.run([SIM, "replay", path, *options], capture_output=True, text=True,
                          timeout=300)


def logs_in(folder):
    return glob.glob(os.path.join(folder, "*.txt")) + glob.glob(os.path.join(folder, "*.nmea"))


def every_log():
    by_name = {os.path.basename(path): path for path in logs_in(LOGS)}
    if MORE_LOGS and os.path.isdir(MORE_LOGS):
        for path in logs_in(MORE_LOGS):
            by_name.setdefault(os.path.basename(path), path)
    return sorted(by_name.values())


def used_gps_histogram(used_per_report):
    histogram = {}
    for used in used_per_report:
        label = "reports with %d GPS used" % used
        histogram[label] = histogram.get(label, 0) + 1
    return histogram


class EveryPhoneLog(unittest.TestCase):
    def test_every_log_replays_in_each_mode_against_its_tally(self):
        paths = every_log()
        self.assertGreaterEqual(len(paths), SHIPPED_LOGS)
        for path in paths:
            for mode in MODES:
                with self.subTest(log=os.path.basename(path), mode=" ".join(mode)):
                    self.check_log(path, mode)

    def check_log(self, path, mode):
        svg = os.path.join(WORK, os.path.basename(path) + ".svg")
        result = replay(path, *mode, "--coast", "0", "--svg", svg)
        self.assertEqual(result.returncode, 0, result.stderr)
        got = figures(result.stdout)
        expected = phone_log_tally.tally(path, "1.0" if "1.0" in mode else "2.0")
        self.assertEqual(got["GPS fixes sent"], expected["gps_fixes"])
        for provider, count in expected["fixes_by_provider"].items():
            label = "Fix rows GPS" if provider == "GPS" else "Fix rows %s (skipped)" % provider
            self.assertEqual(got[label], count, label)
        reports = expected["used_gps_per_report"]
        self.assertEqual(got["satellite reports"], len(reports))
        self.assertEqual(got["reports with fewer than 4 GPS used"],
                         sum(1 for used in reports if used < 4))
        shown = {label: count for label, count in got.items() if USED_GPS.match(label)}
        self.assertEqual(shown, used_gps_histogram(reports))
        self.assertEqual(got["RMC valid sent true"], expected["rmc_true"])
        self.assertEqual(got["RMC valid sent false"], expected["rmc_false"])
        self.assertEqual(got["sentences"], expected["nmea_rows"])
        if "--burst" not in mode:
            self.assertEqual(got["NMEA chunks sent"], expected["nmea_rows"])
        # Without coasting, every fix is answered by one fused location: forwarded or dropped.
        self.assertEqual(got["fused locations forwarded"] +
                         got["fused locations dropped (interval rule)"], expected["gps_fixes"])
        tree = ElementTree.parse(svg)
        rows = epoch_rows(tree)
        self.assertEqual([int(g.get("data-index")) for g in rows], list(range(got["epochs"])))
        for figure, css_class in ROW_MARKS.items():
            self.assertEqual(rows_marked(tree, css_class), got[figure], figure)


class OnTheLogsClock(unittest.TestCase):
    def test_seconds_follow_the_log_clock_and_the_daemon_can_die_in_them(self):
        path = os.path.join(LOGS, "gpstest-pixel3a-android11.txt")
        result = replay(path, "--kill-at", "100", "--restart-at", "110")
        self.assertEqual(result.returncode, 0, result.stderr)
        got = figures(result.stdout)
        # GPSTest's 327 whole fixes run from 18:21:00.209 to 18:26:27 (1612549587000).
        self.assertEqual(got["epochs"], (1612549587000 - 1612549260209) // 1000 + 1)
        self.assertEqual(got["epochs by the log's seconds"], got["epochs"])
        self.assertEqual((got["daemon deaths"], got["reconnections"],
                          got["seconds daemon down"]), (1, 1, 10))


def hand_made_log():
    """Two fixes in one second, each after a satellite report: the first report with 3 GPS
    used (the library pads it), the second with 4 (it does not)."""
    header = ["# ", "# Header Description:", "# ",
              "# Version: v2.0.4.2 Platform: 10 Manufacturer: Google Model: Pixel 4", "# ",
              "# Fix,Provider,LatitudeDegrees,LongitudeDegrees,AltitudeMeters,SpeedMps,"
              "AccuracyMeters,BearingDegrees,UnixTimeMillis,SpeedAccuracyMps,"
              "BearingAccuracyDegrees",
              "# Status,UnixTimeMillis,SignalCount,SignalIndex,ConstellationType,Svid,"
              "CarrierFrequencyHz,Cn0DbHz,AzimuthDegrees,ElevationDegrees,UsedInFix,"
              "HasAlmanacData,HasEphemerisData", "# "]

    def report(at, used):
        return ["Status,%d,5,%d,1,%d,1575420032,30.0,10.0,40.0,%d,1,1" % (at, i, i + 1,
                                                                          int(i < used))
                for i in range(5)]

    def fix(at):
        return "Fix,GPS,37.4,-122.1,10.0,0.0,5.0,0.0,%d,0.0,0.0" % at

    rows = (report(1589494300000, 3) + [fix(1589494300100)] + report(1589494300100, 4) +
            [fix(1589494300600)])
    return "\n".join(header + rows) + "\n"


class PaddedSecond(unittest.TestCase):
    def test_a_padded_second_shows_the_padded_report_and_reports_are_counted_once(self):
        path = os.path.join(WORK, "padded-second.txt")
        with open(path, "w") as handle:
            handle.write(hand_made_log())
        svg = os.path.join(WORK, "padded-second.svg")
        result = replay(path, "--svg", svg)
        self.assertEqual(result.returncode, 0, result.stderr)
        got = figures(result.stdout)
        self.assertEqual((got["epochs"], got["satellite reports"],
                          got["reports with 3 GPS used"], got["reports with 4 GPS used"]),
                         (1, 2, 1, 1))
        self.assertEqual(got["satellite lists padded"], 1)
        shown = [e.text for e in ElementTree.parse(svg).iter("{http://www.w3.org/2000/svg}text")
                 if e.get("class") == "padded"]
        self.assertEqual(shown, ["3 \u2192 8"])
        with open(svg) as picture:
            self.assertIn("satellite reports 2,", picture.read())


class NeitherFormat(unittest.TestCase):
    def test_a_log_without_nmea_rows_or_nmea_file_is_warned_about(self):
        with_file = replay(os.path.join(LOGS, "gnsslogger-pixel7-android14.txt"))
        self.assertEqual(with_file.stderr, "")
        result = replay(os.path.join(LOGS, "gpstest-pixel3a-android11.txt"))
        self.assertEqual(result.returncode, 0)
        self.assertIn("gpstest-pixel3a-android11.nmea", result.stderr)
        self.assertEqual(len(result.stderr.splitlines()), 1, result.stderr)

    def test_a_file_of_neither_format_exits_2_with_one_line(self):
        path = os.path.join(WORK, "neither.csv")
        with open(path, "w") as handle:
            handle.write("time,lat,lon\n1,2,3\n")
        result = replay(path)
        self.assertEqual(result.returncode, 2)
        self.assertEqual(result.stdout, "")
        self.assertEqual(len(result.stderr.splitlines()), 1, result.stderr)
        self.assertIn("neither", result.stderr)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
