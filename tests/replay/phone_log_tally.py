"""An independent count of what a phone log (GnssLogger, GPSTest) should lead to in a replay.

It reads the raw rows with none of the replay's code:
- Fix rows are counted by provider (upper case). A GPS row is a fix sent when it has as
  many fields as the header's Fix line names, its latitude, longitude and time are numbers,
  its position is not 0,0, and its time is not earlier than the last GPS fix counted.
- Status rows form one satellite report per run: a row continues the run while its time and
  SignalCount are those of the run and its SignalIndex is higher than the row before.
  Each report's used GPS entries are its rows of constellation 1 with UsedInFix 1, among the
  first 64 rows when the 1.0 record is asked for.
- NMEA rows (in the log, in the .nmea file of the same name, or a .nmea file replayed on its
  own) are one chunk each. A chunk
  with "$GPRMC" sends its validity: true when ",A," follows "$GPRMC".
"""

import os

GPS = 1
V1_CAPACITY = 64


def _rows(path):
    if not os.path.exists(path):
        return []
    with open(path, "rb") as handle:
        text = handle.read().decode("latin-1")
    return [line.rstrip("\r") for line in text.split("\n")]


def _number(text):
    try:
        return float(text)
    except ValueError:
        return None


def _header_columns(lines, row_type):
    for line in lines:
        if line.startswith("#"):
            names = [name.strip() for name in line[1:].split(",")]
            if names[0] == row_type:
                return names
    return None


def _count_fixes(lines, counts):
    columns = _header_columns(lines, "Fix")
    if columns is None:
        return
    lower = [name.lower() for name in columns]

    def at(*names):
        return next(lower.index(n.lower()) for n in names if n.lower() in lower)

    lat, lon = at("LatitudeDegrees", "Latitude"), at("LongitudeDegrees", "Longitude")
    time = at("UnixTimeMillis", "(UTC)TimeInMs")
    last_time = 0
    for line in lines:
        fields = line.split(",")
        if fields[0] != "Fix":
            continue
        provider = fields[1].upper()
        counts["fixes_by_provider"][provider] = counts["fixes_by_provider"].get(provider, 0) + 1
        if provider != "GPS" or len(fields) < len(columns):
            continue
        values = [_number(fields[i]) for i in (lat, lon)]
        if None in values or values == [0, 0] or not fields[time].isdigit():
            continue
        if int(fields[time]) >= last_time:
            last_time = int(fields[time])
            counts["gps_fixes"] += 1


def _satellite_reports(lines):
    reports = []
    previous = None
    for line in lines:
        fields = line.split(",")
        if fields[0] != "Status":
            continue
        time, count, index = fields[1], int(fields[2]), int(fields[3])
        constellation, used = int(fields[4]), fields[10] == "1"
        if previous is None or (time, count) != previous[:2] or index <= previous[2]:
            reports.append([])
        reports[-1].append(constellation == GPS and used)
        previous = (time, count, index)
    return reports


def _count_nmea(lines, counts):
    for line in lines:
        if not line.startswith("NMEA,"):
            continue
        counts["nmea_rows"] += 1
        sentence = line[len("NMEA,"):line.rindex(",")]
        at = sentence.find("$GPRMC")
        if at >= 0:
            key = "rmc_true" if ",A," in sentence[at:] else "rmc_false"
            counts[key] += 1


def tally(path, hal="2.0"):
    lines = _rows(path)
    counts = {"fixes_by_provider": {}, "gps_fixes": 0, "nmea_rows": 0, "rmc_true": 0,
              "rmc_false": 0}
    _count_fixes(lines, counts)
    capacity = V1_CAPACITY if hal == "1.0" else None
    counts["used_gps_per_report"] = [sum(report[:capacity])
                                     for report in _satellite_reports(lines)]
    stem, extension = os.path.splitext(path)
    _count_nmea(lines + (_rows(stem + ".nmea") if extension != ".nmea" else []), counts)
    return counts
