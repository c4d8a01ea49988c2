#!/usr/bin/env python3
"""Writes the recording stubs of the simulator's fakes from hidl-gen's C++ interface headers.

For every interface named on the command line it writes a class Recording<Name>_V<major>_<minor>
that derives from the interface and implements each of its pure virtual operations, inherited
ones included, the same way: the call is recorded through sim::Recorder (which also decides
whether it fails in transport), then answered from the fake's knobs: a bool with its answer
(true unless told otherwise), another plain result with its answer or a value-initialised
default, an object with what the overridable provide() hands out, and a result callback with
value-initialised arguments. linkToDeath and unlinkToDeath are recorded as well and go through
the owning service process, as a device's proxy links them to the peer's death.

Usage: fake_stubs.py -I HIDL_INCLUDE_DIR -o OUTPUT_BASE FQNAME...
(FQNAME as package@version::IName; writes OUTPUT_BASE.h and OUTPUT_BASE.cpp)
"""
import argparse
import os
import re
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "host", "gen"))
import hidl_cpp  # noqa: E402

OBJECT_RE = re.compile(r"^::android::sp<(.*)>$")

# Result kinds, as sim::ResultKind names them.
KIND_NONE, KIND_BOOL, KIND_INTEGER, KIND_FLOAT, KIND_OBJECT = (
    "kNone", "kBool", "kInteger", "kFloat", "kObject")


def kind_of(method):
    if method.result == "bool":
        return KIND_BOOL
    if OBJECT_RE.match(method.result):
        return KIND_OBJECT
    if method.result in ("float", "double"):
        return KIND_FLOAT
    if method.result == "void":
        return KIND_NONE
    return KIND_INTEGER


def class_name(fq_name):
    package_at_version, name = fq_name.split("::")
    version = package_at_version.split("@")[1].replace(".", "_")
    return "Recording%s_V%s" % (name, version)


def answer_expression(method):
    kind = kind_of(method)
    if kind == KIND_NONE:
        if method.callback_args is not None:
            values = ", ".join("%s{}" % t for t in method.callback_args)
            return "_hidl_cb(%s);\n    return ::android::hardware::Void()" % values
        return "return ::android::hardware::Void()"
    if kind == KIND_OBJECT:
        target = OBJECT_RE.match(method.result).group(1)
        return 'return ::sim::castProvided<%s>(provide("%s"))' % (target, method.name)
    fallback = "true" if kind == KIND_BOOL else "%s{}" % method.result
    return 'return mRecorder.answer<%s>("%s", %s)' % (method.result, method.name, fallback)


def method_definition(cls, method):
    args = ", ".join("::sim::fmt(%s)" % name for _, name in method.params)
    return """%s {
    if (!mRecorder.enter("%s", [&] { return std::vector<std::string>{%s}; })) {
        return ::zdhost::transportError();
    }
    %s;
}
""" % (method.signature(cls), method.name, args, answer_expression(method))


DEATH_LINKS = """::android::hardware::Return<bool> {c}::linkToDeath(
        const ::android::sp<::android::hardware::hidl_death_recipient>& recipient, uint64_t cookie) {{
    return mRecorder.linkToDeath(this, recipient, cookie);
}}

::android::hardware::Return<bool> {c}::unlinkToDeath(
        const ::android::sp<::android::hardware::hidl_death_recipient>& recipient) {{
    return mRecorder.unlinkToDeath(recipient);
}}
"""


def class_declaration(fq_name, methods):
    cls = class_name(fq_name)
    lines = ["// Records every call of %s and answers it from the fake's knobs." % fq_name,
             "class %s : public %s {" % (cls, hidl_cpp.cpp_name(fq_name)),
             "  public:",
             "    explicit %s(::sim::Recorder recorder) : mRecorder(std::move(recorder)) {}" % cls,
             "    // The operations, with the kind of plain result each answers.",
             "    static const std::vector<::sim::Operation>& operations();", ""]
    lines += ["    %s override;" % m.signature() for m in methods]
    lines += ["    ::android::hardware::Return<bool> linkToDeath(const ::android::sp<"
              "::android::hardware::hidl_death_recipient>& recipient, uint64_t cookie) override;",
              "    ::android::hardware::Return<bool> unlinkToDeath(const ::android::sp<"
              "::android::hardware::hidl_death_recipient>& recipient) override;",
              ""]
    if any(kind_of(m) == KIND_OBJECT for m in methods):
        lines += ["  protected:",
                  "    // The object an operation with an object result hands out; none by default.",
                  "    virtual ::android::sp<::android::hidl::base::V1_0::IBase> provide(",
                  "            const std::string& /*op*/) {",
                  "        return nullptr;", "    }"]
        lines.append("")
    lines += ["  private:", "    ::sim::Recorder mRecorder;", "};"]
    return "\n".join(lines) + "\n"


def operations_definition(cls, methods):
    entries = ['        {"%s", ::sim::ResultKind::%s},' % (m.name, kind_of(m)) for m in methods]
    entries += ['        {"linkToDeath", ::sim::ResultKind::kBool},',
                '        {"unlinkToDeath", ::sim::ResultKind::kBool},']
    return """const std::vector<::sim::Operation>& %s::operations() {
    static const std::vector<::sim::Operation> kOperations = {
%s
    };
    return kOperations;
}
""" % (cls, "\n".join(entries))


def interface_header(fq_name):
    package_at_version, name = fq_name.split("::")
    package, version = package_at_version.split("@")
    return "/".join(package.split(".") + [version, name + ".h"])


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("-I", dest="include_dir", required=True)
    parser.add_argument("-o", dest="output", required=True, help="output path without extension")
    parser.add_argument("interfaces", nargs="+")
    args = parser.parse_args()

    interfaces = [(fq, hidl_cpp.interface_operations(args.include_dir, hidl_cpp.cpp_name(fq)))
                  for fq in args.interfaces]
    header_name = os.path.basename(args.output) + ".h"

    header = ["// Generated by fake_stubs.py. Do not edit.", "#pragma once", ""]
    header += ["#include <%s>" % interface_header(fq) for fq, _ in interfaces]
    header += ["", "#include <string>", "#include <utility>", "#include <vector>", "",
               '#include "recorder.h"', "", "namespace sim {"]
    header += ["", "\n".join(class_declaration(fq, methods) for fq, methods in interfaces)]
    header += ["}  // namespace sim", ""]

    source = ["// Generated by fake_stubs.py. Do not edit.", '#include "%s"' % header_name, "",
              '#include "format.h"', "", "namespace sim {", ""]
    for fq, methods in interfaces:
        cls = class_name(fq)
        source.append(operations_definition(cls, methods))
        source += [method_definition(cls, m) for m in methods]
        source.append(DEATH_LINKS.format(c=cls))
    source += ["}  // namespace sim", ""]

    hidl_cpp.write_if_changed(args.output + ".h", "\n".join(header))
    hidl_cpp.write_if_changed(args.output + ".cpp", "\n".join(source))


if __name__ == "__main__":
    main()
