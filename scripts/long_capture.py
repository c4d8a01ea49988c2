"""Writes a long NMEA capture made of a real one laid end to end, for looking at the replay's
picture of a long run (scripts/timeline-screenshots.sh).

Usage: long_capture.py CAPTURE MINUTES > LONG.log

Each copy's UTC times (RMC, GGA, GNS, ZDA, GST, GBS, GRS, GLL) move on by the capture's span
plus a second, and the checksums are written anew; everything else is kept. The times wrap
at midnight and dates are left alone, so keep the result within one day.
"""

import re
import sys

TIME_FIELD = {"RMC": 1, "GGA": 1, "GNS": 1, "ZDA": 1, "GST": 1, "GBS": 1, "GRS": 1, "GLL": 5}
TIME = re.compile(r"^(\d\d)(\d\d)(\d\d)(\.\d+)?$")


def seconds_of(field):
    match = TIME.match(field)
    return None if not match else int(match[1]) * 3600 + int(match[2]) * 60 + int(match[3])


def with_checksum(body):
    value = 0
    for char in body:
        value ^= ord(char)
    return "$%s*%02X" % (body, value)


def moved(line, offset):
    if not line.startswith("$") or "*" not in line:
        return line
    fields = line[1:line.index("*")].split(",")
    index = TIME_FIELD.get(fields[0][2:]) if len(fields[0]) == 5 else None
    if index is None or index >= len(fields) or seconds_of(fields[index]) is None:
        return line
    total = (seconds_of(fields[index]) + offset) % 86400
    fraction = fields[index][6:]
    fields[index] = "%02d%02d%02d%s" % (total // 3600, total // 60 % 60, total % 60, fraction)
    return with_checksum(",".join(fields))


def main(path, minutes):
    with open(path, encoding="latin-1") as handle:
        lines = [line.rstrip("\r\n") for line in handle if line.strip()]
    times = []
    for line in lines:
        fields = line.split("*")[0].split(",")
        index = TIME_FIELD.get(fields[0][3:]) if len(fields[0]) == 6 else None
        if index is not None and index < len(fields) and seconds_of(fields[index]) is not None:
            times.append(seconds_of(fields[index]))
    span = max(times) - min(times) + 1
    for copy in range(-(-minutes * 60 // span)):
        for line in lines:
            sys.stdout.write(moved(line, copy * span) + "\r\n")


if __name__ == "__main__":
    main(sys.argv[1], int(sys.argv[2]))
