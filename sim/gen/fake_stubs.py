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

IBASE_CPP = "::android::hidl::base::V1_0::IBase"
STRUCT_RE = re.compile(r"^struct (\w+) : public (::[\w:]+) \{")
PURE_RE = re.compile(r"^\s*virtual ::android::hardware::Return<(.*)> (\w+)\((.*)\) = 0;\s*$")
CALLBACK_RE = re.compile(r"^\s*using (\w+)_cb = std::function<void\((.*)\)>;\s*$")
OBJECT_RE = re.compile(r"^::android::sp<(.*)>$")

# Result kinds, as sim::ResultKind names them.
KIND_NONE, KIND_BOOL, KIND_INTEGER, KIND_FLOAT, KIND_OBJECT = (
    "kNone", "kBool", "kInteger", "kFloat", "kObject")


class Method:
    def __init__(self, name, result, params, callback_args):
        self.name = name
        self.result = result  # the T of Return<T>
        self.params = params  # [(type, name)]
        self.callback_args = callback_args  # types of the result callback's arguments, or None

    @property
    def kind(self):
        if self.result == "bool":
            return KIND_BOOL
        if OBJECT_RE.match(self.result):
            return KIND_OBJECT
        if self.result in ("float", "double"):
            return KIND_FLOAT
        if self.result == "void":
            return KIND_NONE
        return KIND_INTEGER


def split_top_level(text):
    """Splits a parameter list at the commas that are not inside <> or ()."""
    parts, depth, current = [], 0, ""
    for ch in text:
        if ch in "<(":
            depth += 1
        elif ch in ">)":
            depth -= 1
        if ch == "," and depth == 0:
            parts.append(current.strip())
            current = ""
        else:
            current += ch
    if current.strip():
        parts.append(current.strip())
    return parts


def parse_params(text):
    params = []
    for part in split_top_level(text):
        match = re.match(r"^(.*?)\s*(\w+)$", part)
        if match is None:
            sys.exit("cannot read parameter '%s'" % part)
        params.append((match.group(1), match.group(2)))
    return params


def value_type(param_type):
    """The plain type of a parameter type: 'const T&' gives T."""
    text = param_type.strip()
    if text.startswith("const "):
        text = text[len("const "):]
    return text.rstrip("&").strip()


def header_path(include_dir, cpp_name):
    """::a::b::V1_2::IFoo -> INCLUDE/a/b/1.2/IFoo.h"""
    parts = cpp_name.strip(":").split("::")
    version = parts[-2]
    if not re.match(r"^V\d+_\d+$", version):
        sys.exit("not an interface name: " + cpp_name)
    path = parts[:-2] + [version[1:].replace("_", "."), parts[-1] + ".h"]
    return os.path.join(include_dir, *path)


def cpp_name_of(fq_name):
    package_at_version, name = fq_name.split("::")
    package, version = package_at_version.split("@")
    return "::" + "::".join(package.split(".") + ["V" + version.replace(".", "_"), name])


def read_header(include_dir, cpp_name):
    """Returns (parent C++ name, [Method]) of the interface declared in its header."""
    path = header_path(include_dir, cpp_name)
    with open(path, encoding="utf-8") as f:
        lines = f.read().splitlines()
    name = cpp_name.split("::")[-1]
    parent, callbacks, methods = None, {}, []
    for line in lines:
        struct = STRUCT_RE.match(line)
        if struct and struct.group(1) == name:
            parent = struct.group(2)
        callback = CALLBACK_RE.match(line)
        if callback:
            callbacks[callback.group(1)] = [value_type(t) for t, _ in parse_params(callback.group(2))]
        pure = PURE_RE.match(line)
        if pure:
            params = parse_params(pure.group(3))
            callback_args = None
            if params and params[-1][1] == "_hidl_cb":
                callback_args = callbacks.get(pure.group(2))
                if callback_args is None:
                    sys.exit("%s: no callback type for %s" % (path, pure.group(2)))
                params = params[:-1]
            methods.append(Method(pure.group(2), pure.group(1), params, callback_args))
    if parent is None:
        sys.exit("%s: no declaration of %s" % (path, name))
    return parent, methods


def all_methods(include_dir, cpp_name):
    """Every pure virtual operation of the interface and of its parents, root first."""
    chain = []
    current = cpp_name
    while current != IBASE_CPP:
        parent, methods = read_header(include_dir, current)
        chain.append(methods)
        current = parent
    seen, ordered = set(), []
    for methods in reversed(chain):
        for method in methods:
            if method.name not in seen:
                seen.add(method.name)
                ordered.append(method)
    return ordered


def class_name(fq_name):
    package_at_version, name = fq_name.split("::")
    version = package_at_version.split("@")[1].replace(".", "_")
    return "Recording%s_V%s" % (name, version)


def signature(method, owner=None):
    params = ["%s %s" % p for p in method.params]
    if method.callback_args is not None:
        params.append("%s_cb _hidl_cb" % method.name)
    name = method.name if owner is None else "%s::%s" % (owner, method.name)
    return "::android::hardware::Return<%s> %s(%s)" % (method.result, name, ", ".join(params))


def answer_expression(method):
    kind = method.kind
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
""" % (signature(method, cls), method.name, args, answer_expression(method))


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
             "class %s : public %s {" % (cls, cpp_name_of(fq_name)),
             "  public:",
             "    explicit %s(::sim::Recorder recorder) : mRecorder(std::move(recorder)) {}" % cls,
             "    // The operations, with the kind of plain result each answers.",
             "    static const std::vector<::sim::Operation>& operations();", ""]
    lines += ["    %s override;" % signature(m) for m in methods]
    lines += ["    ::android::hardware::Return<bool> linkToDeath(const ::android::sp<"
              "::android::hardware::hidl_death_recipient>& recipient, uint64_t cookie) override;",
              "    ::android::hardware::Return<bool> unlinkToDeath(const ::android::sp<"
              "::android::hardware::hidl_death_recipient>& recipient) override;",
              ""]
    if any(m.kind == KIND_OBJECT for m in methods):
        lines += ["  protected:",
                  "    // The object an operation with an object result hands out; none by default.",
                  "    virtual ::android::sp<::android::hidl::base::V1_0::IBase> provide(",
                  "            const std::string& /*op*/) {",
                  "        return nullptr;", "    }"]
        lines.append("")
    lines += ["  private:", "    ::sim::Recorder mRecorder;", "};"]
    return "\n".join(lines) + "\n"


def operations_definition(cls, methods):
    entries = ['        {"%s", ::sim::ResultKind::%s},' % (m.name, m.kind) for m in methods]
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


def write(path, text):
    os.makedirs(os.path.dirname(os.path.abspath(path)), exist_ok=True)
    if os.path.exists(path):
        with open(path, encoding="utf-8") as f:
            if f.read() == text:
                return
    with open(path, "w", encoding="utf-8") as f:
        f.write(text)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("-I", dest="include_dir", required=True)
    parser.add_argument("-o", dest="output", required=True, help="output path without extension")
    parser.add_argument("interfaces", nargs="+")
    args = parser.parse_args()

    interfaces = [(fq, all_methods(args.include_dir, cpp_name_of(fq))) for fq in args.interfaces]
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

    write(args.output + ".h", "\n".join(header))
    write(args.output + ".cpp", "\n".join(source))


if __name__ == "__main__":
    main()
