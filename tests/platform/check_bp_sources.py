#!/usr/bin/env python3
"""Checks that Android.bp builds the library from exactly the sources the host build does.

Usage: check_bp_sources.py REPO_ROOT MODULE SOURCE...
  MODULE  the cc_library_shared in REPO_ROOT/Android.bp
  SOURCE  the CMake library target's sources, absolute or relative to REPO_ROOT
"""

import os
import re
import sys

MODULE_BLOCK = re.compile(r"^cc_library_shared \{\n(.*?)^\}", re.M | re.S)
SRCS = re.compile(r"^    srcs: \[(.*?)\]", re.M | re.S)
COMPILED = (".c", ".cc", ".cpp")


def bp_sources(blueprint, module):
    for block in MODULE_BLOCK.findall(blueprint):
        if re.search(r'^    name: "%s",$' % re.escape(module), block, re.M):
            srcs = SRCS.search(block)
            return re.findall(r'"([^"]*)"', srcs.group(1)) if srcs else []
    raise SystemExit("FAIL: no cc_library_shared %s in Android.bp" % module)


def main(repo, module, cmake_sources):
    with open(os.path.join(repo, "Android.bp"), encoding="utf-8") as f:
        listed = bp_sources(f.read(), module)
    built = {os.path.relpath(os.path.join(repo, s), repo)
             for s in cmake_sources if s.endswith(COMPILED)}
    errors = ["Android.bp lists %s more than once" % s for s in sorted(set(listed))
              if listed.count(s) > 1]
    errors += ["Android.bp uses a glob: %s" % s for s in listed if "*" in s]
    errors += ["CMake builds %s, Android.bp does not list it" % s
               for s in sorted(built - set(listed))]
    errors += ["Android.bp lists %s, CMake does not build it" % s
               for s in sorted(set(listed) - built)]
    if errors:
        print("FAIL:\n  " + "\n  ".join(errors), file=sys.stderr)
        return 1
    print("OK: Android.bp and CMake build the same %d sources" % len(built))
    return 0


if __name__ == "__main__":
    if len(sys.argv) < 3:
        raise SystemExit(__doc__)
    sys.exit(main(os.path.abspath(sys.argv[1]), sys.argv[2], sys.argv[3:]))
