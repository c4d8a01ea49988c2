#!/usr/bin/env python3
"""Writes the per-interface definitions that hidl-gen's C++ sources would give on a
device (descriptor, interface chain, default IBase behaviour, castFrom, service
look-up and registration), bound to the host runtime, for every interface of one
HIDL package."""
import argparse
import re

import hidl_cpp

IBASE = "android.hidl.base@1.0::IBase"


def cpp_name(fq_name):
    # No leading "::": a definition like "Return<void> ::a::B::f" would parse as Return<void>::a.
    return hidl_cpp.cpp_name(fq_name).lstrip(":")


def header_of(fq_name):
    package_at_version, name = fq_name.split("::")
    package, version = package_at_version.split("@")
    return "/".join(package.split(".") + [version, name + ".h"])


def chain_of(include_root, fq_name):
    """The interface chain as the generated headers' parents give it, as fq names."""
    return [hidl_cpp.fq_name(c)
            for c in hidl_cpp.interface_chain(include_root, hidl_cpp.cpp_name(fq_name))]


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


def definitions(include_root, fq_name):
    chain = chain_of(include_root, fq_name)
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


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--include-root", required=True, help="where hidl-gen wrote the headers")
    parser.add_argument("-o", dest="output", required=True)
    parser.add_argument("package")
    parser.add_argument("interfaces", nargs="*", help="the package's interface names")
    args = parser.parse_args()
    fq_names = ["%s::%s" % (args.package, n) for n in sorted(args.interfaces)]
    lines = ["// Generated by hidl_host_defs.py from %s. Do not edit.\n" % args.package]
    lines += ["#include <%s>\n" % header_of(n) for n in fq_names]
    lines.append("#include <zdhost/interface_support.h>\n")
    lines += [definitions(args.include_root, n) for n in fq_names]
    hidl_cpp.write_if_changed(args.output, "".join(lines))


if __name__ == "__main__":
    main()
