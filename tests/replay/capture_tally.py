"""An independent count of what a capture should lead to in a per-sentence replay.

It reads the capture with none of the replay's code: each line that starts with '$' or '!' is
one NMEA chunk (other lines are no sentences and are not sent);
a chunk sends an NMEA update when "$GPRMC" occurs in it and the text from there is shorter
than 256 characters, with the validity ",A," anywhere in that text. Seconds are counted
from the UTC times of well-formed RMC and GGA sentences (each change of time is a new second),
and a GPS or combined-talker RMC with an empty time, which a receiver without a fix still sends
once a second, is a second of its own. Fixes are the seconds with an RMC status A or a GGA
quality above 0 and a position.
"""

import functools
import re

_TIME_BEARING = re.compile(r"^\$(?:GP|GN|GL|GA|GB|BD|GQ|QZ)(RMC|GGA)$")


def _checksum_ok(line):
    if not line.startswith("$") or "*" not in line:
        return False
    body, _, given = line[1:].rpartition("*")
    value = functools.reduce(lambda acc, ch: acc ^ ord(ch), body, 0)
    return given[:2].upper() == "%02X" % value


def _lines(path):
    with open(path, "rb") as handle:
        text = handle.read().decode("latin-1")
    return [line.rstrip("\r") for line in text.split("\n") if line[:1] in ("$", "!")]


def tally(path):
    lines = _lines(path)
    counts = {
        "sentences": len(lines),
        "rmc_true": 0,
        "rmc_false": 0,
        "rmc_too_long": 0,
        "no_gprmc": 0,
        "seconds": 0,
        "fixes": 0,
    }
    times = []
    fix_times = set()
    untimed_seconds = 0
    for line in lines:
        at = line.find("$GPRMC")
        if at < 0:
            counts["no_gprmc"] += 1
        elif len(line) - at >= 256:
            counts["rmc_too_long"] += 1
        elif ",A," in line[at:]:
            counts["rmc_true"] += 1
        else:
            counts["rmc_false"] += 1
        if not _checksum_ok(line):
            continue
        fields = line.split("*")[0].split(",")
        match = _TIME_BEARING.match(fields[0])
        if not match or len(fields) < 7:
            continue
        if not fields[1]:
            untimed_seconds += fields[0] in ("$GPRMC", "$GNRMC")
            continue
        if not times or times[-1] != fields[1]:
            times.append(fields[1])
        kind = match.group(1)
        has_position = fields[3 if kind == "RMC" else 2] != ""
        if kind == "RMC" and fields[2] == "A" and has_position:
            fix_times.add(fields[1])
        if kind == "GGA" and fields[6] not in ("", "0") and has_position:
            fix_times.add(fields[1])
    counts["seconds"] = len(times) + untimed_seconds
    counts["fixes"] = len(fix_times)
    return counts
