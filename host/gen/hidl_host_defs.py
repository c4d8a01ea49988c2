#!/usr/bin/env python3
"""Writes the per-interface definitions that hidl-gen's C++ sources would give on a
device (descriptor, interface chain, default IBase behaviour, castFrom, service
look-up and registration), bound to the host runtime, for every interface of one
HIDL package."""
import argparse
import os
import re
import sys

IBASE = "android.hidl.base@1.0::IBase"


class Roots:
    def __init__(self, root_args):
        self.roots = []
        for root_arg in root_args:
            prefix, path = root_arg.split(":", 1)
            self.roots.append((prefix, path))

    def package_dir(self, package_at_version):
        package, version = package_at_version.split("@")
        for prefix, path in self.roots:
            if package == prefix or package.startswith(prefix + "."):
                rest = package[len(prefix):].lstrip(".")
                parts = [path] + (rest.split(".") if rest else []) + [version]
                return os.path.join(*parts)
        sys.exit("no package root for " + package_at_version)


def strip_comments(text):
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    return re.sub(r"//[^\n]*", "", text)


def read_interface(roots, fq_name):
    """Returns (package@version, imports, parent expression or None) of fq_name."""
    package_at_version, name = fq_name.split("::")
    path = os.path.join(roots.package_dir(package_at_version), name + ".hal")
    with open(path, encoding="utf-8") as f:
        text = strip_comments(f.read())
    imports = re.findall(r"^\s*import\s+([\w.@:]+)\s*;", text, flags=re.M)
    match = re.search(r"\binterface\s+" + name + r"\s*(?:extends\s+([\w.@:]+))?\s*\{", text)
    if match is None:
        sys.exit("no interface %s in %s" % (name, path))
    return package_at_version, imports, match.group(1)


def resolve(expression, package_at_version, imports):
    """Fully qualifies a type name as written inside package_at_version."""
    if "@" in expression and not expression.startswith("@"):
        return expression
    package = package_at_version.split("@")[0]
    if expression.startswith("@"):
        return package + expression
    for imp in imports:
        if imp.endswith("::" + expression):
            return imp if not imp.startswith("@") else package + imp
    return package_at_version + "::" + expression


def chain_of(roots, fq_name):
    chain = [fq_name]
    while chain[-1] != IBASE:
        package_at_version, imports, parent = read_interface(roots, chain[-1])
        chain.append(IBASE if parent is None else resolve(parent, package_at_version, imports))
    return chain


def cpp_name(fq_name):
    package_at_version, name = fq_name.split("::")
    package, version = package_at_version.split("@")
    major, minor = version.split(".")
    # No leading "::": a definition like "Return<void> ::a::B::f" would parse as Return<void>::a.
    return "::".join(package.split(".") + ["V%s_%s" % (major, minor), name])


def header_of(fq_name):
    package_at_version, name = fq_name.split("::")
    package, version = package_at_version.split("@")
    return "/".join(package.split(".") + [version, name + ".h"])


def ibase_methods(cls, chain_var):
    return """
::android::hardware::Return<void> {c}::interfaceChain(interfaceChain_cb _hidl_cb) {{
    _hidl_cb(::zdhost::toHidlStrings({k}));
    return ::android::hardware::Void();
}}

::android::hardware::Return<void> {c}::debug(const ::android::hardware::hidl_handle&,
        const ::android::hardware::hidl_vec<::android::hardware::hidl_string>&) {{
    return ::android::hardware::Void();
}}

::android::hardware::Return<void> {c}::interfaceDescriptor(interfaceDescriptor_cb _hidl_cb) {{
    _hidl_cb(descriptor);
    return ::android::hardware::Void();
}}

::android::hardware::Return<void> {c}::getHashChain(getHashChain_cb _hidl_cb) {{
    _hidl_cb(::zdhost::emptyHashChain({k}.size()));
    return ::android::hardware::Void();
}}

::android::hardware::Return<void> {c}::setHALInstrumentation() {{
    return ::android::hardware::Void();
}}

::android::hardware::Return<bool> {c}::linkToDeath(
        const ::android::sp<::android::hardware::hidl_death_recipient>& recipient, uint64_t) {{
    return recipient != nullptr;
}}

::android::hardware::Return<void> {c}::ping() {{
    return ::android::hardware::Void();
}}

::android::hardware::Return<void> {c}::getDebugInfo(getDebugInfo_cb _hidl_cb) {{
    _hidl_cb(::zdhost::localDebugInfo());
    return ::android::hardware::Void();
}}

::android::hardware::Return<void> {c}::notifySyspropsChanged() {{
    return ::android::hardware::Void();
}}

::android::hardware::Return<bool> {c}::unlinkToDeath(
        const ::android::sp<::android::hardware::hidl_death_recipient>& recipient) {{
    return recipient != nullptr;
}}
""".format(c=cls, k=chain_var)


def service_methods(cls):
    return """
::android::sp<{c}> {c}::tryGetService(const std::string& serviceName, bool) {{
    return ::zdhost::lookupService<{c}>(descriptor, serviceName, true);
}}

::android::sp<{c}> {c}::getService(const std::string& serviceName, bool) {{
    return ::zdhost::lookupService<{c}>(descriptor, serviceName, false);
}}

::android::status_t {c}::registerAsService(const std::string& serviceName) {{
    return ::zdhost::ServiceManager::get().add(serviceName, this) ? ::android::OK
                                                                 : ::android::UNKNOWN_ERROR;
}}

bool {c}::registerForNotifications(const std::string& serviceName,
        const ::android::sp<::android::hidl::manager::V1_0::IServiceNotification>& notification) {{
    return ::zdhost::ServiceManager::get().registerForNotifications(descriptor, serviceName,
                                                                   notification);
}}
""".format(c=cls)


def cast_methods(cls, chain):
    out = []
    for ancestor in chain:
        out.append("""
::android::hardware::Return<::android::sp<{c}>> {c}::castFrom(
        const ::android::sp<{a}>& parent, bool) {{
    return ::zdhost::castInterface<{c}>(parent);
}}
""".format(c=cls, a=cpp_name(ancestor)))
    return "".join(out)


def definitions(roots, fq_name):
    chain = chain_of(roots, fq_name)
    cls = cpp_name(fq_name)
    chain_var = "kChain_" + fq_name_token(fq_name)
    chain_text = ",\n    ".join('"%s"' % d for d in chain)
    out = "\n// ---- %s\n" % fq_name
    out += "const char* %s::descriptor(\"%s\");\n" % (cls, fq_name)
    out += "static const std::vector<std::string> %s = {\n    %s,\n};\n" % (chain_var, chain_text)
    out += ibase_methods(cls, chain_var) + cast_methods(cls, chain)
    if fq_name != IBASE:
        out += service_methods(cls)
    return out


def fq_name_token(fq_name):
    return re.sub(r"\W", "_", fq_name)


def interfaces_of(roots, package_at_version):
    directory = roots.package_dir(package_at_version)
    names = sorted(f[:-4] for f in os.listdir(directory)
                   if f.endswith(".hal") and f != "types.hal")
    return [package_at_version + "::" + n for n in names]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("-r", dest="roots", action="append", required=True,
                        help="PACKAGE_PREFIX:DIRECTORY, as for hidl-gen")
    parser.add_argument("-o", dest="output", required=True)
    parser.add_argument("package")
    args = parser.parse_args()
    roots = Roots(args.roots)
    fq_names = interfaces_of(roots, args.package)
    lines = ["// Generated by hidl_host_defs.py from %s. Do not edit.\n" % args.package]
    lines += ["#include <%s>\n" % header_of(n) for n in fq_names]
    lines.append("#include <zdhost/interface_support.h>\n")
    lines += [definitions(roots, n) for n in fq_names]
    os.makedirs(os.path.dirname(os.path.abspath(args.output)), exist_ok=True)
    with open(args.output, "w", encoding="utf-8") as f:
        f.write("".join(lines))


if __name__ == "__main__":
    main()
