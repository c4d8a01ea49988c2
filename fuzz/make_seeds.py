#!/usr/bin/env python3
"""Writes the seed corpora of the fuzz targets, fuzz/corpus/<target>/, from the
receiver captures in examples/captures and from hand-made edge inputs.

Each target's source file describes its input layout; the encoders below follow
it. Seeds named bulk-* use the bulk scale (fuzz/harness.h): they take seconds, so
the corpus tests replay them but the timed fuzz runs leave them out. The output is deterministic and committed; run this again after changing a
layout or the captures. Files in a corpus directory that this script no longer
writes are removed.
"""

import pathlib
import re
import struct

ROOT = pathlib.Path(__file__).resolve().parent.parent
CAPTURES = ROOT / "examples" / "captures"
CORPUS = ROOT / "fuzz" / "corpus"

BULK = 0xB7  # the scale byte that lets a count reach its full range (fuzz/harness.cpp)
SMALL = 0x00
BASE_TIME_MS = 1602036021000  # a fix time of one of the captures, in ms since the epoch

# Talker to constellation code (the same in gnss@1.0 and @2.0).
CONSTELLATIONS = {"GP": 1, "GL": 3, "QZ": 4, "GQ": 4, "GB": 5, "BD": 5, "GA": 6}
# System id at the end of an NMEA 4.1 GSA sentence, to constellation code.
GSA_SYSTEMS = {"1": 1, "2": 3, "3": 6, "4": 5, "5": 4}
USED_IN_FIX = 4
HAS_EPHEMERIS = 1


def read_captures():
    """Capture name -> its lines, line endings kept."""
    captures = {}
    for path in sorted(CAPTURES.glob("*.log")):
        text = path.read_bytes().decode("latin-1")
        captures[path.stem.removeprefix("gpsd-")] = text.splitlines(keepends=True)
    return captures


def cycles(lines):
    """One-second bursts: from a GGA sentence to the line before the next one."""
    bursts, current = [], []
    for line in lines:
        if line[3:6] == "GGA" and current:
            bursts.append(current)
            current = []
        current.append(line)
    if current:
        bursts.append(current)
    return [b for b in bursts if b[0][3:6] == "GGA"]


# ---- nmea_chunk: u32 length argument, i64 time stamp, chunk bytes.


def nmea_input(chunk, length=None, timestamp=BASE_TIME_MS):
    data = chunk.encode("latin-1")
    return struct.pack("<Iq", len(data) if length is None else length, timestamp) + data


def first_line(lines, pattern):
    regex = re.compile(pattern)
    return next(line for line in lines if regex.match(line))


def gprmc_tail(burst):
    text = "".join(burst)
    at = text.find("$GPRMC")
    return -1 if at < 0 else len(text) - at


def nmea_seeds(captures):
    seeds = {}
    he910, quectel = captures["telit-he910"], captures["quectel"]
    seeds["single-rmc-valid-he910"] = nmea_input(first_line(he910, r"\$GPRMC,[^,]*,A,"))
    seeds["single-rmc-void-he910"] = nmea_input(first_line(he910, r"\$GPRMC,[^,]*,V,"))
    seeds["single-rmc-valid-crlf-quectel"] = nmea_input(first_line(quectel, r"\$GPRMC,[^,]*,A,"))
    seeds["single-gnrmc-zed-f9p"] = nmea_input(first_line(captures["ublox-zed-f9p-nmea"], r"\$GNRMC"))
    seeds["single-garmc-pls83"] = nmea_input(first_line(captures["telit-pls83-w"], r"\$GARMC"))
    longest = max((line for lines in captures.values() for line in lines), key=len)
    seeds["single-longest-proprietary-mtk"] = nmea_input(longest)

    # One burst of each capture, and the first GPS-talker burst whose RMC tail is
    # 256 characters or more (rejected) where a capture has one.
    for name, lines in captures.items():
        bursts = cycles(lines)
        seeds[f"burst-{name}"] = nmea_input("".join(bursts[len(bursts) // 2]))
        long_tail = [b for b in bursts if gprmc_tail(b) >= 256]
        if long_tail:
            seeds[f"burst-rmc-tail-256-plus-{name}"] = nmea_input("".join(long_tail[0]))

    # A void RMC followed by a GSA sentence, whose ",A," marks the chunk valid.
    void_rmc = first_line(he910, r"\$GPRMC,[^,]*,V,")
    seeds["void-rmc-then-gsa"] = nmea_input(void_rmc + first_line(he910, r"\$GPGSA,A,"))

    # RMC tails of exactly 255 and 256 characters from real sentences.
    text = "".join(he910)
    after_rmc = text[text.find(first_line(he910, r"\$GPRMC,[^,]*,A,")) :]
    assert len(after_rmc) > 256
    seeds["rmc-tail-255"] = nmea_input(after_rmc[:255])
    seeds["rmc-tail-256"] = nmea_input(after_rmc[:256])

    # The length guard around 10240 with a short chunk and with a real chunk of
    # 10240 characters that ends in an RMC sentence.
    valid = first_line(he910, r"\$GPRMC,[^,]*,A,")
    seeds["length-10240"] = nmea_input(valid, length=10240)
    seeds["length-10241"] = nmea_input(valid, length=10241)
    seeds["length-max"] = nmea_input(valid, length=0xFFFFFFFF)
    history = "".join(he910)
    head = history[: 10240 - len(valid)]
    seeds["chunk-10240-ending-in-rmc"] = nmea_input(head + valid)
    seeds["chunk-10241-ending-in-rmc"] = nmea_input(history[: 10241 - len(valid)] + valid)

    # A NUL byte ends the chunk before its RMC sentence.
    seeds["nul-before-rmc"] = nmea_input("$GPGGA,1*00\0" + valid, length=12 + len(valid))
    seeds["empty"] = nmea_input("", length=0, timestamp=0)
    seeds["timestamp-negative"] = nmea_input(valid, timestamp=-1)
    return seeds


# ---- satellites of a burst


def satellites(burst):
    """(constellation, svid, cn0, elevation, azimuth, used) of each GSV entry."""
    used = set()
    for line in burst:
        if line[3:6] != "GSA":
            continue
        fields = line.split("*")[0].split(",")
        talker_system = CONSTELLATIONS.get(line[1:3])
        system = GSA_SYSTEMS.get(fields[18]) if len(fields) > 18 else talker_system
        for prn in fields[3:15]:
            if prn.isdigit():
                used.add((system, int(prn)))
    sats = []
    for line in burst:
        if line[3:6] != "GSV" or line[1:3] not in CONSTELLATIONS:
            continue
        constellation = CONSTELLATIONS[line[1:3]]
        fields = line.split("*")[0].split(",")
        for at in range(4, len(fields) - 3, 4):
            prn, elevation, azimuth, snr = fields[at : at + 4]
            if not prn.isdigit():
                continue
            sats.append(
                (
                    constellation,
                    int(prn),
                    float(snr) if snr else 0.0,
                    float(elevation) if elevation else 0.0,
                    float(azimuth) if azimuth else 0.0,
                    (constellation, int(prn)) in used or (None, int(prn)) in used,
                )
            )
    return sats


def used_gps(sats):
    return sum(1 for s in sats if s[0] == 1 and s[5])


def sv_entry(sat):
    """20 bytes: svid, constellation, flags, cN0, elevation, azimuth, carrier."""
    constellation, svid, cn0, elevation, azimuth, used = sat
    flags = HAS_EPHEMERIS | (USED_IN_FIX if used else 0)
    return struct.pack("<hBBffff", svid, constellation, flags, cn0, elevation, azimuth, 0.0)


def bursts_by_used_gps(captures):
    """A real burst with fewer than four used GPS satellites and one with four or more,
    per capture that has them."""
    picked = {}
    for name, lines in captures.items():
        for burst in cycles(lines):
            sats = satellites(burst)
            if not sats:
                continue
            kind = "thin" if used_gps(sats) < 4 else "full"
            picked.setdefault(f"{kind}-{name}", sats)
    return picked


# ---- sv_v1: u8 mode, u16 location flags, u32 numSvs, up to 64 entries.

QUICK_CHIPSET = 0x8300  # chipset layout: source type 131, quick GPS
QUICK_DAEMON = 0x0500  # daemon layout: source type 130, quick GPS
PLAIN_DAEMON = 0x0400  # daemon layout: source type 2


def sv1_input(sats, mode=0, flags=0, num_svs=None):
    entries = b"".join(sv_entry(s) for s in sats[:64])
    count = len(sats) if num_svs is None else num_svs
    return struct.pack("<BHI", mode, flags, count) + entries


def gps_sats(n, used):
    return [(1, 1 + i, 30.0 + i % 10, 45.0, 10.0 * i % 360, i < used) for i in range(n)]


def report_seeds(captures, encode, label, counts):
    """Real satellite reports, and thin GPS reports of the given sizes."""
    seeds = {f"capture-{name}": encode(sats) for name, sats in bursts_by_used_gps(captures).items()}
    seeds.update({f"{label}-{n}-thin": encode(gps_sats(n, 2)) for n in counts})
    return seeds


def sv1_seeds(captures):
    seeds = report_seeds(captures, sv1_input, "numsvs", (0, 59, 60, 62, 64))
    seeds["numsvs-65-entries-64"] = sv1_input(gps_sats(64, 2), num_svs=65)
    seeds["numsvs-max"] = sv1_input(gps_sats(64, 0), num_svs=0xFFFFFFFF)
    seeds["numsvs-2-of-4-used"] = sv1_input(gps_sats(4, 4), num_svs=2)
    seeds["quick-chipset-vk7705"] = sv1_input(gps_sats(3, 1), mode=1 | (1 << 1), flags=QUICK_CHIPSET)
    seeds["quick-daemon-vk7702"] = sv1_input(gps_sats(3, 1), mode=1 | (4 << 1), flags=QUICK_DAEMON)
    seeds["plain-daemon-vk7702"] = sv1_input(gps_sats(3, 1), mode=1 | (4 << 1), flags=PLAIN_DAEMON)
    seeds["no-framework"] = sv1_input(gps_sats(10, 3), mode=16)
    seeds["second-location"] = sv1_input(gps_sats(10, 3), mode=32)
    seeds["second-location-numsvs-64"] = sv1_input(gps_sats(64, 0), mode=32)
    seeds["cn0-nan"] = struct.pack("<BHI", 0, 0, 1) + struct.pack(
        "<hBBffff", 3, 1, USED_IN_FIX, float("nan"), 0.0, 0.0, 0.0
    )
    return seeds


# ---- sv_v2: u8 mode, u8 scale, u16 location flags, u16 list size, 21-byte entries.


def sv2_input(sats, mode=0, flags=0, size=None):
    entries = b"".join(sv_entry(s) + struct.pack("<B", s[0]) for s in sats)
    size = len(sats) if size is None else size
    return struct.pack("<BBHH", mode, BULK if size > 96 else SMALL, flags, size) + entries


def sv2_seeds(captures):
    seeds = report_seeds(captures, sv2_input, "size", (0, 59, 60, 64, 65, 96))
    seeds["bulk-size-1000-repeated"] = sv2_input(gps_sats(7, 0), size=1000)
    seeds["bulk-size-max-repeated"] = sv2_input(gps_sats(3, 0), size=0xFFFF)
    # GPS in the 1.0 constellation only: the 2.0 constellation decides.
    mixed = [sv_entry((1, i + 1, 30.0, 45.0, 90.0, True)) + struct.pack("<B", 3) for i in range(5)]
    seeds["constellations-differ"] = struct.pack("<BBHH", 0, SMALL, 0, 5) + b"".join(mixed)
    seeds["quick-daemon-vk7702"] = sv2_input(gps_sats(3, 1), mode=1 | (4 << 1), flags=QUICK_DAEMON)
    seeds["second-location"] = sv2_input(gps_sats(10, 3), mode=16)
    return seeds


# ---- geofence_results: u8 mode, u8 scale, u32 count, (i32 id, i32 result) entries.


def geofence_input(mode, count, entries, scale=None):
    scale = (BULK if count > 40 else SMALL) if scale is None else scale
    packed = b"".join(struct.pack("<ii", *e) for e in entries)
    return struct.pack("<BBI", mode, scale, count) + packed


def geofence_seeds():
    mixed = [(5, 0), (6, -101), (7, 0), (8, -102), (9, -103)]
    return {
        "add-empty": geofence_input(0, 0, []),
        "remove-empty": geofence_input(1, 0, []),
        "add-success-and-error": geofence_input(0, 2, mixed[:2]),
        "remove-success-and-error": geofence_input(1, 2, mixed[:2]),
        "add-no-fence-client": geofence_input(2, 5, mixed),
        "add-no-framework": geofence_input(4, 5, mixed),
        "remove-no-framework": geofence_input(5, 5, mixed),
        "bulk-add-100000": geofence_input(0, 100000, mixed),
        "bulk-remove-100000": geofence_input(1, 100000, mixed),
        "add-count-wraps": geofence_input(0, 0xFFFFFFFF, [(-1, 0x7FFFFFFF)], scale=SMALL),
        "add-extreme-ids": geofence_input(0, 3, [(-2**31, -2**31), (2**31 - 1, 1), (0, 0)]),
    }


# ---- ni_message: u8 mode, u8 scale, i32 length argument, message bytes.


def ni_input(mode, length, payload=b""):
    return struct.pack("<BBi", mode, BULK if length > 1024 else SMALL, length) + payload


def ni_seeds():
    # A SUPL-like message: a length prefix, a version and a session header.
    supl = bytes([0x00, 0x2B, 0x02, 0x00, 0x00, 0x40, 0x00, 0x01, 0x80, 0x07, 0xFF, 0x0A, 0x0D])
    return {
        "three-bytes": ni_input(0, 3, bytes([0x0A, 0x0B, 0x0C])),
        "supl-like": ni_input(0, len(supl), supl),
        "control-and-high-bytes": ni_input(0, 8, bytes.fromhex("00ff7f800a0d2200")),
        "shorter-than-buffer": ni_input(0, 3, bytes([1, 2, 3, 4, 5])),
        "length-0-null": ni_input(1, 0),
        "length-0-buffer": ni_input(0, 0, b"\x01\x02"),
        "length-minus-1": ni_input(0, -1, b"\x01\x02"),
        "length-min": ni_input(0, -(2**31), b"\x01"),
        "bulk-length-max": ni_input(0, 2**31 - 1, supl),
        "bulk-length-65536": ni_input(0, 65536, supl),
        "transport-failure": ni_input(2, 2, b"\x01\x02"),
    }


# ---- qttff_sourcetype: u8 chip selector, u16 flags, u8 other low byte.

CHIPS = 7  # the harness's chip table


def qttff_seeds():
    seeds = {}
    for chip in range(CHIPS):
        for flags in (0x0000, 0x8300, 0x0500, 0x0400, 0xFFFF):
            seeds[f"chip-{chip}-flags-{flags:04x}"] = struct.pack("<BHB", chip, flags, 0x5A)
    return seeds


def write_corpus(target, seeds):
    directory = CORPUS / target
    directory.mkdir(parents=True, exist_ok=True)
    for stale in directory.iterdir():
        if stale.name not in seeds:
            stale.unlink()
    for name, data in seeds.items():
        path = directory / name
        if not path.exists() or path.read_bytes() != data:
            path.write_bytes(data)


def main():
    captures = read_captures()
    write_corpus("nmea_chunk", nmea_seeds(captures))
    write_corpus("sv_v1", sv1_seeds(captures))
    write_corpus("sv_v2", sv2_seeds(captures))
    write_corpus("geofence_results", geofence_seeds())
    write_corpus("ni_message", ni_seeds())
    write_corpus("qttff_sourcetype", qttff_seeds())
    total = sum(p.stat().st_size for p in CORPUS.rglob("*") if p.is_file())
    print(f"{sum(1 for p in CORPUS.rglob('*') if p.is_file())} seeds, {total} bytes")


if __name__ == "__main__":
    main()
