"""Reads what hidl-gen's C++ output declares, for the generators and checks that
build on it: the interfaces of its headers (parent and operations, with the
argument types of their result callbacks), the record layouts it asserts after
each struct, and the proxies, stub codes and interface chains of its *All.cpp
sources. hidl-gen writes each of these on lines of a fixed form; this module is
the one place that knows those forms."""

import os
import re

IBASE = "::android::hidl::base::V1_0::IBase"

_PARENT = re.compile(r"^struct (\w+) : public (::[\w:]+) \{", re.M)
_METHOD = re.compile(
    r"^\s*virtual ::android::hardware::Return<(.*)> (\w+)\((.*)\)( = 0)?;\s*$", re.M)
_CALLBACK = re.compile(r"^\s*using (\w+)_cb = std::function<void\((.*)\)>;\s*$", re.M)
_LAYOUT = re.compile(
    r"static_assert\((offsetof|sizeof|__alignof)\(::([\w:]+?)(?:, (\w+))?\) == (\d+)")
_FIELD = re.compile(r"^\s*(.+?) \w+ __attribute__ \(\(aligned\(\d+\)\)\);", re.M)
_UNION = re.compile(r"\bunion (\w+) final\b")
_PROXY = re.compile(r"^\S.* BpHw(\w+)::_hidl_(\w+)\(", re.M)
_TRANSACT = re.compile(r"->transact\((\d+) /\* (\w+) \*/[^;]*?(1u /\* oneway \*/)?\);")
_STUB_CASE = re.compile(r"^\s*case (\d+) /\* (\w+) \*/:", re.M)
_CHAIN_BODY = re.compile(
    r"::interfaceChain\(interfaceChain_cb _hidl_cb\)\{\s*_hidl_cb\(\{(.*?)\}\);", re.S)
_DESCRIPTOR = re.compile(r"::((?:\w+::)+?)V(\d+)_(\d+)::(\w+)::descriptor")


class ParseError(Exception):
    pass


# ---------------------------------------------------------------- names

def cpp_name(fq_name):
    """a.b@1.2::IFoo (or a nested a.b@1.2::Outer.Inner) -> ::a::b::V1_2::IFoo"""
    package_at_version, name = fq_name.split("::")
    package, version = package_at_version.split("@")
    return "::" + "::".join(package.split(".") + ["V" + version.replace(".", "_")]
                            + name.split("."))


def fq_name(cpp):
    """::a::b::V1_2::IFoo -> a.b@1.2::IFoo"""
    parts = cpp.strip(":").split("::")
    if not re.match(r"^V\d+_\d+$", parts[-2]):
        raise ParseError("not an interface name: " + cpp)
    return "%s@%s::%s" % (".".join(parts[:-2]), parts[-2][1:].replace("_", "."), parts[-1])


def header_path(include_root, cpp):
    """::a::b::V1_2::IFoo -> INCLUDE_ROOT/a/b/1.2/IFoo.h"""
    package_at_version, name = fq_name(cpp).split("::")
    package, version = package_at_version.split("@")
    return os.path.join(include_root, *package.split("."), version, name + ".h")


def read(path):
    with open(path, encoding="utf-8") as f:
        return f.read()


def write_if_changed(path, content):
    """Leaves an unchanged output alone, so that what depends on it is not rebuilt."""
    if os.path.exists(path) and read(path) == content:
        return
    os.makedirs(os.path.dirname(os.path.abspath(path)), exist_ok=True)
    with open(path, "w", encoding="utf-8") as f:
        f.write(content)


# ---------------------------------------------------------------- interface headers

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
    """[(type, name)] of a parameter list."""
    params = []
    for part in split_top_level(text):
        match = re.match(r"^(.*?)\s*(\w+)$", part)
        if match is None:
            raise ParseError("cannot read parameter '%s'" % part)
        params.append((match.group(1), match.group(2)))
    return params


def value_type(param_type):
    """The plain type of a parameter type: 'const T&' gives T."""
    text = param_type.strip()
    if text.startswith("const "):
        text = text[len("const "):]
    return text.rstrip("&").strip()


class Operation:
    """One operation of an interface as its header declares it."""

    def __init__(self, name, result, params_text, pure, callback_args):
        self.name = name
        self.result = result  # the T of Return<T>
        self.params_text = params_text  # as declared, the result callback included
        self.pure = pure
        self.callback_args = callback_args  # types of the result callback's arguments, or None

    @property
    def params(self):
        """[(type, name)] without the result callback."""
        params = parse_params(self.params_text)
        return params[:-1] if self.callback_args is not None else params

    def signature(self, owner=None, named=True):
        """The declaration; unnamed, the parameter names stand in comments."""
        name = self.name if owner is None else "%s::%s" % (owner, self.name)
        params = self.params_text
        if not named:
            params = ", ".join("%s /*%s*/" % p for p in parse_params(self.params_text))
        return "::android::hardware::Return<%s> %s(%s)" % (self.result, name, params)


def read_header(include_root, cpp):
    """(parent, [Operation]) of the interface declared in its header."""
    path = header_path(include_root, cpp)
    text = read(path)
    short = cpp.rsplit("::", 1)[-1]
    parent = next((p for name, p in _PARENT.findall(text) if name == short), None)
    if parent is None:
        raise ParseError("%s: no declaration of %s" % (path, short))
    return parent, declared_operations(text, path)


def interface_chain(include_root, cpp):
    """The interface and its ancestors, most derived first, ending at IBase."""
    chain = [cpp]
    while chain[-1] != IBASE:
        chain.append(read_header(include_root, chain[-1])[0])
    return chain


def interface_operations(include_root, cpp):
    """Every pure virtual operation of the interface and its ancestors, root first, once."""
    seen, ordered = set(), []
    for ancestor in reversed(interface_chain(include_root, cpp)[:-1]):
        for operation in read_header(include_root, ancestor)[1]:
            if operation.pure and operation.name not in seen:
                seen.add(operation.name)
                ordered.append(operation)
    return ordered


def callback_types(text):
    """Result-callback name -> argument list text, as a header declares them."""
    return dict(_CALLBACK.findall(text))


def declared_operations(text, where):
    """[Operation] of every Return-typed virtual a header declares, pure or not, each
    with the argument types of its result callback."""
    callbacks = {name: [value_type(t) for t, _ in parse_params(args)]
                 for name, args in callback_types(text).items()}
    operations = []
    for result, name, params_text, pure in _METHOD.findall(text):
        takes_callback = params_text.endswith("_cb _hidl_cb")
        if takes_callback and name not in callbacks:
            raise ParseError("%s: no callback type for %s" % (where, name))
        operations.append(Operation(name, result, params_text, bool(pure),
                                    callbacks[name] if takes_callback else None))
    return operations


# ---------------------------------------------------------------- records

class Layout:
    def __init__(self):
        self.size = None
        self.align = None
        self.offsets = {}  # field -> offset, in declaration order

    def as_tuple(self):
        return (self.size, self.align, tuple(self.offsets.items()))


def record_layouts(text, layouts=None):
    """C++ type (without the leading ::) -> Layout, from hidl-gen's static_asserts,
    which follow each struct with one line per field in declaration order."""
    layouts = {} if layouts is None else layouts
    for kind, cxx, field, value in _LAYOUT.findall(text):
        layout = layouts.setdefault(cxx, Layout())
        if kind == "offsetof":
            layout.offsets.setdefault(field, int(value))
        elif kind == "sizeof":
            layout.size = int(value)
        else:
            layout.align = int(value)
    return layouts


def struct_body(text, short_name):
    """Text of `struct short_name final { ... }`, or "" when not found."""
    match = re.search(r"\bstruct %s final \{" % re.escape(short_name), text)
    if not match:
        return ""
    depth = 0
    for i in range(match.end() - 1, len(text)):
        if text[i] == "{":
            depth += 1
        elif text[i] == "}":
            depth -= 1
            if depth == 0:
                return text[match.end():i]
    return ""


def field_types(body):
    """The field types of a struct body, in declaration order."""
    return _FIELD.findall(body)


def union_names(text):
    return set(_UNION.findall(text))


# ---------------------------------------------------------------- *All.cpp sources

def proxy_codes(text, where):
    """Method -> (transaction code, oneway) of every BpHw::_hidl_ function that transacts."""
    methods = {}
    starts = list(_PROXY.finditer(text))
    for i, start in enumerate(starts):
        end = starts[i + 1].start() if i + 1 < len(starts) else len(text)
        call = _TRANSACT.search(text, start.end(), end)
        if call is None:
            continue
        if call.group(2) != start.group(2):
            raise ParseError("%s: proxy _hidl_%s transacts as %s"
                             % (where, start.group(2), call.group(2)))
        methods[start.group(2)] = (int(call.group(1)), call.group(3) is not None)
    return methods


def stub_codes(text, below):
    """Transaction code -> method of the stub's switch, for codes below `below`."""
    return {int(code): name for code, name in _STUB_CASE.findall(text) if int(code) < below}


def chain_descriptors(text, where):
    """The interface chain an interfaceChain definition hands out, as fq names."""
    body = _CHAIN_BODY.search(text)
    if body is None:
        raise ParseError(where + ": no interfaceChain found")
    return ["%s@%s.%s::%s" % (ns.strip(":").replace("::", "."), major, minor, name)
            for ns, major, minor, name in _DESCRIPTOR.findall(body.group(1))]
