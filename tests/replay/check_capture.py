"""Replays one capture of any receiver and checks it against independent counts.

Usage: check_capture.py ZDGNSS_SIM CAPTURE WORK_DIR

- A file that is not NMEA at all (epoch_count.py) ends with exit code 2 and one line.
- Otherwise the replay runs (one chunk per sentence; check_replay.py and the nmea_capture fuzz
  target cover bursts), and
  - its epochs are epoch_count.py's count exactly, all cut by UTC time, wherever that count
    is unambiguous;
  - sentences, chunks and the RMC validity the daemon was told match capture_tally.py;
  - the picture has one row per epoch.
"""

import os
import re
import subprocess
import sys
import xml.etree.ElementTree as ElementTree

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import capture_tally  # noqa: E402
import epoch_count  # noqa: E402

FIGURE = re.compile(r"^\s*(\S.*?)\s{2,}(-?\d+)\s*$")
SVG_NS = "{http://www.w3.org/2000/svg}"


def figures(summary):
    return {m.group(1): int(m.group(2)) for m in map(FIGURE.match, summary.splitlines()) if m}


def replay(sim, path, *options):
    return subprocess.run([sim, "replay", path, *options], capture_output=True, text=True,
                          timeout=300)


def check(sim, path, work):
    name = os.path.basename(path)
    expected_epochs = epoch_count.count(path)
    failures = []

    def expect(what, got, want):
        if got != want:
            failures.append("%s: %s is %r, expected %r" % (name, what, got, want))

    if expected_epochs == "not-nmea":
        result = replay(sim, path)
        expect("exit code", result.returncode, 2)
        expect("lines on stderr", len(result.stderr.splitlines()), 1)
        expect("stdout", result.stdout, "")
        return failures

    tally = capture_tally.tally(path)
    svg = os.path.join(work, name + ".svg")
    result = replay(sim, path, "--svg", svg)
    expect("exit code", result.returncode, 0)
    if result.returncode != 0:
        return failures + [result.stderr]
    got = figures(result.stdout)
    if expected_epochs != "ambiguous":
        expect("epochs", got["epochs"], expected_epochs)
        expect("epochs by UTC time", got.get("epochs by UTC time", 0), expected_epochs)
    expect("sentences", got["sentences"], tally["sentences"])
    rows = [g for g in ElementTree.parse(svg).iter(SVG_NS + "g") if g.get("class") == "epoch"]
    expect("picture rows", len(rows), got["epochs"])
    expect("chunks", got["NMEA chunks sent"], tally["sentences"])
    expect("RMC valid true", got["RMC valid sent true"], tally["rmc_true"])
    expect("RMC valid false", got["RMC valid sent false"], tally["rmc_false"])
    return failures


if __name__ == "__main__":
    problems = check(*sys.argv[1:4])
    for problem in problems:
        print(problem)
    print("%s: %s" % (os.path.basename(sys.argv[2]), "FAILED" if problems else "ok"))
    sys.exit(1 if problems else 0)
