"""An independent count of a capture's epochs, from its raw sentences.

Usage: epoch_count.py CAPTURE...   (prints, per capture: its name, then "not-nmea",
"ambiguous" or the number of epochs)

It shares nothing with the replay's reader. A sentence is a line (LF or CRLF) that starts with
'$' or '!', read from the last of the '$' and '!' it starts with. It is trusted when it has no '*' or its '*hh' matches the XOR of the characters
between the start and the '*'. A capture is NMEA at all when some sentence has an address of
letters and digits (three at least, or starting with P) followed by ',' or '*' or the line's
end.

Time-carrying sentences are the trusted RMC, GGA, GNS, ZDA, GST, GBS, GRS (time in the first
field) and GLL (time in the fifth) of any two-character talker. The count is unambiguous
when there is at least one and every one carries a time (hhmmss, optionally '.' and digits;
hours below 24, minutes below 60, seconds up to 60); it is then the number of runs of equal
times among them, the fraction compared as a number.
"""

import re
import sys
from decimal import Decimal

TIME_FIELD = {"RMC": 1, "GGA": 1, "GNS": 1, "ZDA": 1, "GST": 1, "GBS": 1, "GRS": 1, "GLL": 5}
ADDRESS = re.compile(r"^[$!](P[A-Za-z0-9]*|[A-Za-z0-9]{3,})(,|\*|\s*$)")
TALKER_AND_TYPE = re.compile(r"^[A-OQ-Za-z0-9][A-Za-z0-9]{4}$")  # five, not proprietary (P...)
TIME = re.compile(r"^(\d\d)(\d\d)(\d\d)(\.\d*)?$")


def sentences(path):
    with open(path, "rb") as handle:
        text = handle.read().decode("latin-1")
    for line in text.split("\n"):
        line = line[:-1] if line.endswith("\r") else line
        if line[:1] in ("$", "!"):
            start = len(line) - len(line.lstrip("$!"))
            yield line[start - 1:]


def trusted(line):
    if "*" not in line:
        return True
    star = line.index("*")
    body, given = line[1:star], line[star + 1:]
    value = 0
    for char in body:
        value ^= ord(char)
    return (len(given) >= 2 and given[2:].strip(" \t\n\v\f\r") == ""
            and given[:2].upper() == "%02X" % value)


def utc_time(field):
    match = TIME.match(field)
    if not match or int(match[1]) > 23 or int(match[2]) > 59 or int(match[3]) > 60:
        return None
    return Decimal(field)


def count(path):
    lines = list(sentences(path))
    if not any(ADDRESS.match(line) for line in lines):
        return "not-nmea"
    lines = [line for line in lines if trusted(line)]
    times = []
    for line in lines:
        fields = line.split("*")[0].split(",")
        address = fields[0][1:]
        if not TALKER_AND_TYPE.match(address) or address[2:] not in TIME_FIELD:
            continue
        index = TIME_FIELD[address[2:]]
        time = utc_time(fields[index]) if index < len(fields) else None
        if time is None:
            return "ambiguous"
        times.append(time)
    if not times:
        return "ambiguous"
    return sum(1 for i, time in enumerate(times) if i == 0 or time != times[i - 1])


if __name__ == "__main__":
    for capture in sys.argv[1:]:
        print(capture, count(capture))
