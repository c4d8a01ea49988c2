#!/usr/bin/env python3
"""Checks the HIDL interfaces against the wire contract the devices expect.

hidl-gen accepts some mistakes silently (a wrong IBase signature, a method moved to another
position, a field reordered in a record), and any of them breaks binder calls to or from a
device. This script generates C++ from every package (the host copies of the standard
packages and our vendor packages) and checks what hidl-gen computed:

  codes    transaction codes, method counts, parents and oneway flags
  ibase    the C++ signatures of the ten IBase methods and which of them are oneway
  layouts  record sizes, alignments and field offsets
  bpfmt    every Android.bp in the repository is formatted as bpfmt wants
  standard the host copies of the standard packages give the same interface chains,
           transaction codes and record layouts as the platform's own .hal files

Usage: check_interfaces.py CHECK HIDL_GEN REPO_ROOT SCRATCH_DIR [--bpfmt PATH]
                           [--platform DIR]
"""

import argparse
import os
import shutil
import subprocess
import sys
from collections import namedtuple

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "host", "gen"))
import hidl_cpp  # noqa: E402

# Package prefix -> directory holding that prefix's packages, relative to the repository root.
PACKAGE_ROOTS = (
    ("android.hidl", "host/interfaces/android/hidl"),
    ("android.hardware", "host/interfaces/android/hardware"),
    ("vendor.zendra.hardware", "interfaces"),
)

BASE = "android.hidl.base@1.0::IBase"
MANAGER = "android.hidl.manager@1.0"
GNSS = "android.hardware.gnss"
FUSD = "vendor.zendra.hardware.fusd"
ZDGNSS = "vendor.zendra.hardware.gnss"

# Transaction codes that devices use. Inherited methods keep their parent's code.
EXPECTED_CODES = {
    FUSD + "@1.3::IFusdLbs": {
        "getGnssBatchingInterface": 14,
        "sendGnssStartCmd": 19,
        "getFusdGeofenceInterface": 23,
        "getFusdGnssInterface": 24,
    },
    FUSD + "@1.2::IFusdGnssInterface": {
        "setCallback": 1,
        "sendSvStatus": 2,
        "sendNmeaUpdate": 3,
        "sendLocationData": 4,
    },
    FUSD + "@1.2::IFusdGeofenceInterface": {
        "setCallback": 1,
        "addGeofence": 2,
        "removeGeofence": 4,
        "pauseGeofence": 5,
        "resumeGeofence": 6,
    },
    FUSD + "@1.2::IFusdGnssCallback": {"reportFusdLocation": 1},
    FUSD + "@1.2::IFusdGeofenceCallback": {
        "geofenceAddResultCb": 1,
        "geofenceRemoveResultCb": 2,
        "onGetCurrentLocationCb": 3,
        "gnssGeofenceTransitionCb": 4,
        "gnssGeofenceStatusCb": 5,
        "gnssGeofencePauseCb": 6,
        "gnssGeofenceResumeCb": 7,
    },
    FUSD + "@1.1::IGnssBatchingInterface": {"start": 3},
    ZDGNSS + "@1.0::IZDGnss": {
        "getExtensionZdAGnssRil": 24,
        "getExtensionZdSuplFqdn": 25,
        "getHalHidlVersion": 26,
    },
    ZDGNSS + "@2.0::IZDGnss": {
        "getExtensionZdAGnssRil_2_0": 34,
        "getExtensionZdSuplFqdn": 35,
        "getHalHidlVersion": 36,
        "getExtensionZdGnssNi": 37,
    },
    ZDGNSS + "@1.0::IZDAGpsSuplFqdn": {"setCallback": 1, "setSuplHostIp": 2},
    ZDGNSS + "@1.0::IZDAGpsSuplFqdnCallback": {"AgpsRequestSuplDns": 1},
    ZDGNSS + "@1.0::IZDAGnssRil": {"sendNiMessage": 6},
    ZDGNSS + "@2.0::IZDAGnssRil": {"sendNiMessage": 7},
    GNSS + "@1.0::IGnssCallback": {"gnssLocationCb": 1, "gnssSvStatusCb": 3},
    GNSS + "@2.0::IGnssCallback": {"gnssSvStatusCb_2_0": 15},
    GNSS + "@1.0::IGnssBatching": {"start": 3},
    GNSS + "@2.0::IGnssBatching": {"init_2_0": 7},
    GNSS + "@2.0::IAGnssRil": {"updateNetworkState_2_0": 6},
    GNSS + "@2.0::IGnssConfiguration": {"setEsExtensionSec": 9},
    GNSS + "@2.0::IGnss": {"getExtensionGnssBatching_2_0": 32},
}

# Number of methods an interface carries, its own plus inherited ones (IBase's not counted).
EXPECTED_TOTALS = {
    FUSD + "@1.2::IFusdGnssCallback": 1,
    FUSD + "@1.2::IFusdGeofenceCallback": 7,
    GNSS + "@1.1::IGnss": 23,
    GNSS + "@2.0::IGnss": 33,
    GNSS + "@1.0::IGnssCallback": 9,
    GNSS + "@1.1::IGnssCallback": 11,
    GNSS + "@2.0::IGnssCallback": 15,
    GNSS + "@1.1::IGnssConfiguration": 8,
    GNSS + "@2.0::IGnssConfiguration": 9,
    GNSS + "@2.0::IAGnssRil": 6,
    GNSS + "@2.0::IGnssBatching": 7,
    GNSS + "@2.0::IAGnss": 5,
    GNSS + "@2.0::IGnssBatchingCallback": 1,
}

# Interface chains (most derived first, IBase last) that clients walk when they cast.
EXPECTED_CHAINS = {
    GNSS + "@2.0::IGnss": [GNSS + "@2.0::IGnss", GNSS + "@1.1::IGnss", GNSS + "@1.0::IGnss", BASE],
    GNSS + "@2.0::IAGnss": [GNSS + "@2.0::IAGnss", BASE],
    GNSS + "@2.0::IGnssBatchingCallback": [GNSS + "@2.0::IGnssBatchingCallback", BASE],
    FUSD + "@1.1::IGnssBatchingInterface": [
        FUSD + "@1.1::IGnssBatchingInterface", GNSS + "@1.0::IGnssBatching", BASE],
    ZDGNSS + "@1.0::IZDGnss": [
        ZDGNSS + "@1.0::IZDGnss", GNSS + "@1.1::IGnss", GNSS + "@1.0::IGnss", BASE],
    ZDGNSS + "@2.0::IZDGnss": [
        ZDGNSS + "@2.0::IZDGnss", GNSS + "@2.0::IGnss", GNSS + "@1.1::IGnss",
        GNSS + "@1.0::IGnss", BASE],
}

# In the standard packages only these methods are oneway (IBase is covered by "ibase").
EXPECTED_ONEWAY = {MANAGER + "::IServiceNotification": {"onRegistration"}}

HW = "::android::hardware::"
VEC_STRING = HW + "hidl_vec<" + HW + "hidl_string>"
DEATH_RECIPIENT = "const ::android::sp<" + HW + "hidl_death_recipient>& recipient"

# IBase method -> (Return<> type, C++ arguments, results passed to the _cb, or None).
# The libhidl runtime implements exactly these.
EXPECTED_IBASE = {
    "ping": ("void", "", None),
    "interfaceChain": ("void", "interfaceChain_cb _hidl_cb",
                       "const " + VEC_STRING + "& descriptors"),
    "interfaceDescriptor": ("void", "interfaceDescriptor_cb _hidl_cb",
                            "const " + HW + "hidl_string& descriptor"),
    "notifySyspropsChanged": ("void", "", None),
    "linkToDeath": ("bool", DEATH_RECIPIENT + ", uint64_t cookie", None),
    "unlinkToDeath": ("bool", DEATH_RECIPIENT, None),
    "setHALInstrumentation": ("void", "", None),
    "getDebugInfo": ("void", "getDebugInfo_cb _hidl_cb",
                     "const ::android::hidl::base::V1_0::DebugInfo& info"),
    "debug": ("void", "const " + HW + "hidl_handle& fd, const " + VEC_STRING + "& options",
              None),
    "getHashChain": ("void", "getHashChain_cb _hidl_cb",
                     "const " + HW + "hidl_vec<" + HW + "hidl_array<uint8_t, 32>>& hashchain"),
}
EXPECTED_IBASE_ONEWAY = {"notifySyspropsChanged", "setHALInstrumentation"}

# size, alignment, field offsets; complete=True means these are all the fields.
Layout = namedtuple("Layout", "size align offsets complete", defaults=(False,))

EXPECTED_LAYOUTS = {
    FUSD + "@1.2::GeofenceRequest": Layout(72, 8, {
        "geofenceId": 0, "latitudeDegrees": 8, "longitudeDegrees": 16, "radiusMeters": 24,
        "presetA": 32, "notificationResponsivenessMs": 36, "unknownTimerMs": 40,
        "monitorTransitions": 44, "lastTransition": 48, "reserved1": 52, "presetB": 64,
        "reserved2": 68}, complete=True),
    FUSD + "@1.2::GeofenceResult": Layout(8, 4, {"geofenceId": 0, "result": 4}, complete=True),
    GNSS + "@1.0::GnssLocation": Layout(64, 8, {
        "gnssLocationFlags": 0, "latitudeDegrees": 8, "longitudeDegrees": 16,
        "altitudeMeters": 24, "speedMetersPerSec": 32, "bearingDegrees": 36,
        "horizontalAccuracyMeters": 40, "verticalAccuracyMeters": 44,
        "speedAccuracyMetersPerSecond": 48, "bearingAccuracyDegrees": 52, "timestamp": 56},
        complete=True),
    GNSS + "@1.0::IGnssCallback.GnssSvInfo": Layout(24, 4, {"constellation": 2, "svFlag": 20}),
    GNSS + "@1.0::IGnssCallback.GnssSvStatus": Layout(1540, 4, {"numSvs": 0, "gnssSvList": 4}),
    GNSS + "@1.0::IGnssBatching.Options": Layout(16, 8, {"periodNanos": 0, "flags": 8}),
    GNSS + "@2.0::GnssLocation": Layout(88, 8, {"v1_0": 0, "elapsedRealtime": 64}),
    GNSS + "@2.0::IGnssCallback.GnssSvInfo": Layout(28, 4, {"v1_0": 0, "constellation": 24}),
    "android.hidl.base@1.0::DebugInfo": Layout(24, 8, {"pid": 0, "ptr": 8, "arch": 16}),
    MANAGER + "::IServiceManager.InstanceDebugInfo": Layout(64, 8, {"pid": 32, "arch": 56}),
}


class CheckFailed(Exception):
    pass


# ---------------------------------------------------------------- generation

def repo_roots(repo):
    return [(prefix, os.path.join(repo, rel)) for prefix, rel in PACKAGE_ROOTS]


def platform_roots(platform):
    """The platform keeps each standard prefix's packages in interfaces/<prefix>."""
    return [(prefix, os.path.join(platform, "interfaces", prefix))
            for prefix, _ in PACKAGE_ROOTS if prefix.startswith("android.")]


def discover_packages(roots):
    """Every directory holding .hal files is one package version."""
    packages = []
    for prefix, top in roots:
        for dirpath, _, files in os.walk(top):
            if any(f.endswith(".hal") for f in files):
                parts = os.path.relpath(dirpath, top).split(os.sep)
                packages.append("%s@%s" % (".".join([prefix] + parts[:-1]), parts[-1]))
    if not packages:
        raise CheckFailed("no .hal packages found under " + ", ".join(t for _, t in roots))
    return sorted(packages)


def run_hidl_gen(hidl_gen, roots, out, lang, package):
    cmd = [hidl_gen, "-o", out, "-L" + lang]
    for prefix, top in roots:
        cmd += ["-r", "%s:%s" % (prefix, top)]
    cmd.append(package)
    proc = subprocess.run(cmd, capture_output=True, text=True)
    if proc.returncode != 0:
        raise CheckFailed("hidl-gen -L%s failed for %s:\n%s%s"
                          % (lang, package, proc.stdout, proc.stderr))


def generate(hidl_gen, roots, out):
    if not (os.path.isfile(hidl_gen) and os.access(hidl_gen, os.X_OK)):
        raise CheckFailed("hidl-gen not found or not executable: " + hidl_gen)
    shutil.rmtree(out, ignore_errors=True)
    os.makedirs(out)
    packages = discover_packages(roots)
    for package in packages:
        for lang in ("c++-headers", "c++-sources"):
            run_hidl_gen(hidl_gen, roots, out, lang, package)
    print("generated C++ for %d packages: %s" % (len(packages), ", ".join(packages)))
    return out


def generated_files(out, suffix):
    for dirpath, _, files in os.walk(out):
        for name in files:
            if name.endswith(suffix):
                yield os.path.join(dirpath, name)


def read(path):
    with open(path, encoding="utf-8") as f:
        return f.read()


# ---------------------------------------------------------------- codes

RESERVED_CODE_MIN = 0x0F000000

Interface = namedtuple("Interface", "own stub chain")


def fq_name_of(out, path):
    """.../android/hardware/gnss/2.0/GnssAll.cpp -> android.hardware.gnss@2.0::IGnss"""
    parts = os.path.relpath(path, out).split(os.sep)
    iface = "I" + parts[-1][: -len("All.cpp")]
    return "%s@%s::%s" % (".".join(parts[:-2]), parts[-2], iface)


def parse_interface(path):
    text = read(path)
    return Interface(hidl_cpp.proxy_codes(text, path), hidl_cpp.stub_codes(text, RESERVED_CODE_MIN),
                     hidl_cpp.chain_descriptors(text, path))


def parse_interfaces(out):
    return {fq_name_of(out, p): parse_interface(p) for p in generated_files(out, "All.cpp")}


def full_methods(interfaces, fq):
    """All methods of an interface, inherited ones included, as name -> (code, oneway)."""
    methods = {}
    for ancestor in interfaces[fq].chain:
        if ancestor == BASE:
            continue
        if ancestor not in interfaces:
            raise CheckFailed("%s: ancestor %s was not generated" % (fq, ancestor))
        methods.update(interfaces[ancestor].own)
    return methods


def lookup(interfaces, fq):
    if fq not in interfaces:
        raise CheckFailed("interface %s was not generated" % fq)
    return full_methods(interfaces, fq)


def check_proxy_matches_stub(interfaces, fq, errors):
    """The proxies along the chain and the stub's switch must agree on every code."""
    from_proxies = {code: name for name, (code, _) in full_methods(interfaces, fq).items()}
    if from_proxies != interfaces[fq].stub:
        errors.append("%s: proxy codes %s differ from stub codes %s"
                      % (fq, sorted(from_proxies.items()), sorted(interfaces[fq].stub.items())))
    if sorted(from_proxies) != list(range(1, len(from_proxies) + 1)):
        errors.append("%s: codes are not 1..%d: %s" % (fq, len(from_proxies), sorted(from_proxies)))


def check_expected_codes(interfaces, errors):
    for fq, expected in EXPECTED_CODES.items():
        methods = lookup(interfaces, fq)
        for name, code in expected.items():
            actual = methods.get(name, (None,))[0]
            if actual != code:
                errors.append("%s::%s has transaction code %s, expected %d"
                              % (fq, name, actual, code))


def check_totals(interfaces, errors):
    for fq, total in EXPECTED_TOTALS.items():
        methods = lookup(interfaces, fq)
        if len(methods) != total:
            errors.append("%s has %d methods, expected %d: %s"
                          % (fq, len(methods), total, sorted(methods)))


def check_chains(interfaces, errors):
    for fq, chain in EXPECTED_CHAINS.items():
        lookup(interfaces, fq)
        if interfaces[fq].chain != chain:
            errors.append("%s has interface chain %s, expected %s"
                          % (fq, interfaces[fq].chain, chain))


def check_oneway(interfaces, errors):
    for fq in interfaces:
        if not fq.startswith("android.") or fq == BASE:
            continue
        oneway = {m for m, (_, ow) in interfaces[fq].own.items() if ow}
        expected = EXPECTED_ONEWAY.get(fq, set())
        if oneway != expected:
            errors.append("%s: oneway methods %s, expected %s"
                          % (fq, sorted(oneway), sorted(expected)))


def check_codes(out):
    interfaces = parse_interfaces(out)
    errors = []
    for fq in sorted(interfaces):
        if fq != BASE:
            check_proxy_matches_stub(interfaces, fq, errors)
    check_expected_codes(interfaces, errors)
    check_totals(interfaces, errors)
    check_chains(interfaces, errors)
    check_oneway(interfaces, errors)
    report(errors, "transaction codes of %d interfaces" % len(interfaces))


# ---------------------------------------------------------------- ibase

def check_ibase_declarations(header, errors):
    operations = hidl_cpp.declared_operations(header, "IBase.h")
    declared = {op.name: (op.result, op.params_text) for op in operations}
    if set(declared) != set(EXPECTED_IBASE):
        errors.append("IBase declares %s, expected exactly %s"
                      % (sorted(declared), sorted(EXPECTED_IBASE)))
    for name, (ret, args, _) in EXPECTED_IBASE.items():
        if name in declared and declared[name] != (ret, args):
            errors.append("IBase::%s is Return<%s> (%s), expected Return<%s> (%s)"
                          % ((name,) + declared[name] + (ret, args)))


def check_ibase_callbacks(header, errors):
    callbacks = hidl_cpp.callback_types(header)
    expected = {n: results for n, (_, _, results) in EXPECTED_IBASE.items() if results}
    for name in sorted(set(callbacks) | set(expected)):
        if callbacks.get(name) != expected.get(name):
            errors.append("IBase::%s_cb passes (%s), expected (%s)"
                          % (name, callbacks.get(name), expected.get(name)))


def check_ibase_oneway(source, errors):
    proxies = hidl_cpp.proxy_codes(source, "BaseAll.cpp")
    oneway = {name for name, (_, ow) in proxies.items() if ow}
    if oneway != EXPECTED_IBASE_ONEWAY:
        errors.append("IBase oneway methods are %s, expected %s"
                      % (sorted(oneway), sorted(EXPECTED_IBASE_ONEWAY)))


def check_ibase(out):
    base_dir = os.path.join(out, "android", "hidl", "base", "1.0")
    errors = []
    header = read(os.path.join(base_dir, "IBase.h"))
    check_ibase_declarations(header, errors)
    check_ibase_callbacks(header, errors)
    check_ibase_oneway(read(os.path.join(base_dir, "BaseAll.cpp")), errors)
    report(errors, "IBase signatures")


# ---------------------------------------------------------------- layouts

def parse_layouts(out):
    """C++ type -> hidl_cpp.Layout, from every generated header."""
    layouts = {}
    for path in generated_files(out, ".h"):
        hidl_cpp.record_layouts(read(path), layouts)
    return layouts


def cxx_name(fq):
    """vendor.x.fusd@1.2::Outer.Inner -> vendor::x::fusd::V1_2::Outer::Inner"""
    return hidl_cpp.cpp_name(fq).lstrip(":")


def check_layout(fq, expected, actual, errors):
    for what in ("size", "align"):
        if getattr(actual, what) != getattr(expected, what):
            errors.append("%s: %s is %s, expected %d"
                          % (fq, what, getattr(actual, what), getattr(expected, what)))
    for field, offset in expected.offsets.items():
        if actual.offsets.get(field) != offset:
            errors.append("%s.%s: offset %s, expected %d"
                          % (fq, field, actual.offsets.get(field), offset))
    if expected.complete and set(actual.offsets) != set(expected.offsets):
        errors.append("%s: fields %s, expected %s"
                      % (fq, sorted(actual.offsets), sorted(expected.offsets)))


def check_layouts(out):
    layouts = parse_layouts(out)
    errors = []
    for fq, expected in EXPECTED_LAYOUTS.items():
        actual = layouts.get(cxx_name(fq))
        if actual is None:
            errors.append("%s: no layout found in the generated headers" % fq)
        else:
            check_layout(fq, expected, actual, errors)
    report(errors, "layouts of %d records" % len(EXPECTED_LAYOUTS))


# ---------------------------------------------------------------- bpfmt

def find_blueprints(repo, scratch):
    """Android.bp files of the repository, skipping hidden and CMake build directories."""
    skip = os.path.realpath(scratch)
    found = []
    for dirpath, dirs, files in os.walk(repo):
        dirs[:] = sorted(d for d in dirs if not d.startswith(".")
                         and os.path.realpath(os.path.join(dirpath, d)) != skip
                         and not os.path.exists(os.path.join(dirpath, d, "CMakeCache.txt")))
        found += [os.path.join(dirpath, f) for f in files if f == "Android.bp"]
    return sorted(found)


def check_bpfmt(bpfmt, repo, scratch):
    tool = shutil.which(bpfmt)
    if tool is None:
        raise CheckFailed("bpfmt not found: " + bpfmt)
    errors = []
    blueprints = find_blueprints(repo, scratch)
    for path in blueprints:
        proc = subprocess.run([tool, "-d", path], capture_output=True, text=True)
        if proc.returncode != 0 or proc.stdout or proc.stderr:
            errors.append("%s is not bpfmt-clean:\n%s%s" % (path, proc.stdout, proc.stderr))
    report(errors, "bpfmt on %d Android.bp files" % len(blueprints))


# ---------------------------------------------------------------- standard

def compare(what, host, real, errors):
    for name in sorted(set(host) | set(real)):
        if host.get(name) != real.get(name):
            errors.append("%s %s: host copy gives %s, platform gives %s"
                          % (what, name, host.get(name), real.get(name)))


def as_tuples(layouts):
    return {name: layout.as_tuple() for name, layout in layouts.items()}


def check_standard(hidl_gen, repo, platform, scratch):
    standard = [root for root in repo_roots(repo) if root[0].startswith("android.")]
    host = generate(hidl_gen, standard, os.path.join(scratch, "host"))
    real = generate(hidl_gen, platform_roots(platform), os.path.join(scratch, "platform"))
    errors = []
    interfaces = parse_interfaces(real)
    compare("interface", parse_interfaces(host), interfaces, errors)
    layouts = parse_layouts(real)
    compare("record", as_tuples(parse_layouts(host)), as_tuples(layouts), errors)
    report(errors, "host copies against the platform's %d interfaces and %d records"
           % (len(interfaces), len(layouts)))


# ---------------------------------------------------------------- driver

def report(errors, what):
    if errors:
        raise CheckFailed("%d problem(s) in %s:\n  %s" % (len(errors), what, "\n  ".join(errors)))
    print("OK: " + what)


def parse_args(argv):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("check", choices=("codes", "ibase", "layouts", "bpfmt", "standard"))
    parser.add_argument("hidl_gen")
    parser.add_argument("repo")
    parser.add_argument("scratch")
    parser.add_argument("--bpfmt", default="bpfmt")
    parser.add_argument("--platform", help="folder holding the platform's interfaces/")
    return parser.parse_args(argv)


def main(argv):
    args = parse_args(argv)
    repo = os.path.abspath(args.repo)
    scratch = os.path.abspath(args.scratch)
    try:
        if args.check == "bpfmt":
            check_bpfmt(args.bpfmt, repo, scratch)
            return 0
        if args.check == "standard":
            check_standard(args.hidl_gen, repo, os.path.abspath(args.platform), scratch)
            return 0
        out = generate(args.hidl_gen, repo_roots(repo), os.path.join(scratch, "generated"))
        {"codes": check_codes, "ibase": check_ibase, "layouts": check_layouts}[args.check](out)
    except (CheckFailed, hidl_cpp.ParseError) as failure:
        print("FAIL: %s" % failure, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
