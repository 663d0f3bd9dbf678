#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes the generated modules of the package: python/generate.py, with ZTPORTAL_LIBRARY set.

_interface.py and receipts.py are made from ztportal/c/ztportal.h, and pools.py from the library's own
tables (zt_schema). A test checks that all are up to date.
"""

import ctypes
import json
import os
import pathlib
import re
import textwrap

SOURCE = pathlib.Path(__file__).resolve().parent
HEADER = SOURCE.parent / "ztportal" / "c" / "ztportal.h"
PACKAGE = SOURCE / "ztportal"

NUMBERS = {"bool", "int", "float", "size_t", "int32_t", "uint32_t", "int64_t", "uint64_t"}


def wrapped(text, indent):
    """Lines of at most 100 columns. A pair in parentheses is not broken."""
    text = re.sub(r'(\("\w+",|"\w+":) ', r"\1~", text)
    lines = textwrap.wrap(text, 100, subsequent_indent=" " * indent, break_long_words=False)
    return "\n".join(lines).replace("~", " ")


def camel(words):
    """"step type" is StepType, zt_send_end is SendEnd, and emailClient is EmailClient."""
    words = re.split("[ _]", words.removeprefix("zt_"))
    return "".join(word[0].upper() + word[1:] for word in words)


class Header:
    """The declarations of ztportal.h."""

    def __init__(self, text):
        text = re.sub(r"/\*.*?\*/", "", text, flags=re.DOTALL)
        self.enumerations = {name: re.findall(r"(\w+) = (\d+)", body) for name, body in
                             re.findall(r"typedef int32_t (\w+);\s*enum \{([^}]*)\};", text)}
        self.structures = {name: body for body, name in
                           re.findall(r"typedef struct \w+ \{([^}]*)\} (\w+);", text)}
        self.callbacks = {name: (result, parameters) for result, name, parameters in
                          re.findall(r"typedef (\w+) \(\*(\w+)\)\(([^)]*)\);", text)}
        self.functions = [(name, result, parameters) for result, name, parameters in re.findall(
            r"ZT_C_EXPORT ([\w ]+?\*?) ?(\w+)\(([^)]*)\);", text)]
        # In the order of the header: a callback may use a structure that another one contains.
        self.types = re.findall(r"typedef (?:struct \w+ \{[^}]*\} (\w+)|\w+ \(\*(\w+)\))", text)

    def type(self, text):
        """The ctypes type of a type in C."""
        name = text.replace("const", "").replace("*", "").strip()
        pointers = text.count("*")
        if name in ("char", "void"):
            base, pointers = f"c_{name}_p", pointers - 1
        elif name in NUMBERS:
            base = "c_" + name.removesuffix("_t") if name != "size_t" else "c_size_t"
        elif name in self.enumerations:
            base = "c_int32"
        elif name in self.structures or name in self.callbacks:
            base = camel(name)
        else:
            base, pointers = "c_void_p", pointers - 1
        return "POINTER(" * pointers + base + ")" * pointers

    def parameters(self, text):
        """The names and types of parameters. The text of a callback may contain zero bytes if its
        length follows."""
        words = [one.strip() for one in " ".join(text.split()).split(",")]
        pairs = [re.fullmatch(r"(.*?)(\w+)", word).groups() for word in words if word != "void"]
        types = [(name, self.type(kind)) for kind, name in pairs]
        return types

    def members(self, structure):
        found = self.parameters(self.structures[structure].replace(";", ",").rstrip(", \n"))
        return with_lengths(found)


def with_lengths(members):
    """ctypes cuts a text off at its first zero byte, unless it is a plain pointer."""
    names = [name for name, _ in members]
    return [(name, "c_void_p" if kind == "c_char_p" and (
                f"{name}_length" in names or names[i + 1:i + 2] == ["length"]) else kind)
            for i, (name, kind) in enumerate(members)]


def enumeration(name, members):
    prefix = os.path.commonprefix([member for member, _ in members])
    prefix = prefix[:prefix.rindex("_") + 1]
    if any(member[len(prefix)].isdigit() for member, _ in members):
        prefix = "ZT_"
    text = f"\n\nclass {camel(name)}(OpenEnum):\n"
    return text + "".join(f"    {member.removeprefix(prefix)} = {number}\n"
                          for member, number in members)


def interface(header):
    """The text of _interface.py."""
    header = Header(header)
    text = '''# SPDX-License-Identifier: Apache-2.0
"""The declarations of ztportal.h. Made by python/generate.py; do not edit."""

from ctypes import (CFUNCTYPE, POINTER, Structure, c_bool, c_char_p, c_float, c_int, c_int32,
                    c_int64, c_size_t, c_uint32, c_uint64, c_void_p)
from enum import IntEnum
from typing import Any


class OpenEnum(IntEnum):
    """A number that a later version of the library adds gets a member as well."""

    @classmethod
    def _missing_(cls, value: Any) -> IntEnum:
        member = int.__new__(cls, value)
        member._name_, member._value_ = f"UNKNOWN_{value}", value
        return member
'''
    for name, members in header.enumerations.items():
        text += enumeration(name, members)
    for structure, callback in header.types:
        if structure:
            members = ", ".join(f'("{name}", {kind})' for name, kind in header.members(structure))
            text += f"\n\nclass {camel(structure)}(Structure):\n"
            text += wrapped(f"    _fields_ = [{members}]", 16) + "\n"
        else:
            result, parameters = header.callbacks[callback]
            kinds = [kind for _, kind in with_lengths(header.parameters(parameters))]
            kinds.insert(0, "None" if result == "void" else header.type(result))
            text += "\n\n" + wrapped(f"{camel(callback)} = CFUNCTYPE({', '.join(kinds)})", 4) + "\n"
    text += "\n\n# The result and the parameters of each function.\n"
    text += "FUNCTIONS: dict[str, tuple[Any, ...]] = {\n"
    for name, result, parameters in header.functions:
        kinds = [kind for _, kind in header.parameters(parameters)]
        kinds.insert(0, "None" if result == "void" else header.type(result))
        kinds = ", ".join(kinds) + ("," if len(kinds) == 1 else "")
        text += wrapped(f'    "{name}": ({kinds}),', 8) + "\n"
    return text + "}\n"


RECEIPTS = {"zt_delivery": "Receipt", "zt_saved_report": "SavedReport",
            "zt_send_result": "SendResult"}


def value(kind, name, enumerations):
    """The name, type and value of an attribute that is a member of a structure."""
    given = f"given.{name}"
    if kind in enumerations:
        return name, camel(kind), f"{camel(kind)}({given})"
    if name == "saved_to":
        return name, "Path | None", f"Path(decode({given})) if {given} else None"
    if kind == "const char*":
        return name, *(("Path", f"Path(decode({given}))") if name == "path" else
                       ("str", f"decode({given})"))
    if name == "time":
        return name, "datetime", f"_EPOCH + timedelta(milliseconds={given})"
    if name.endswith("_us"):
        return name.removesuffix("_us"), "float", f"{given} / 1e6"
    return (name.removesuffix("_s"), "float", given) if name.endswith("_s") else (name, "int", given)


def receipts(header):
    """The text of receipts.py."""
    text = '''# SPDX-License-Identifier: Apache-2.0
"""What became of reports, as values. Durations are in seconds. Made by python/generate.py; do not
edit."""

from __future__ import annotations

from dataclasses import dataclass
from datetime import datetime, timedelta, timezone
from pathlib import Path
from typing import Any

from ._interface import DeliveryError, Outcome, SendEnd
from ._library import decode

_EPOCH = datetime(1970, 1, 1, tzinfo=timezone.utc)
'''
    enumerations = Header(header).enumerations
    for structure, name in RECEIPTS.items():
        body = re.search(rf"typedef struct {structure} {{(.*?)}} {structure};", header, re.DOTALL)[1]
        members = [(*value(kind.strip(), member, enumerations), comment) for kind, member, comment in
                   re.findall(r"^  (.*?)(\w+);(?: +/\* (.*?) \*/)?$", body, re.MULTILINE)
                   if member != "size"]
        text += f"\n\n@dataclass(frozen=True)\nclass {name}:\n"
        text += "".join(f"    {member}: {kind}" + f"  # {comment}" * bool(comment) + "\n"
                        for member, kind, _, comment in members)
        if name == "Receipt":
            text += ("\n    @property\n    def accepted(self) -> bool:\n"
                     "        return self.outcome is Outcome.ACCEPTED\n")
        values = ", ".join(value for _, _, value, _ in members)
        text += f"\n    @classmethod\n    def _of(cls, given: Any) -> {name}:\n"
        text += wrapped(f"        return cls({values})", 19) + "\n"
    return text


ATTRIBUTES = {"string": "String()", "date": "Date()", "integer": "Number(int)",
              "64-bit integer": "Number(int)", "boolean": "Number(boolean)"}


def snake(word):
    return re.sub(r"(?=[A-Z])", "_", word).lower()


def attributes(keys, enumerations):
    for key in keys:
        if key["type"] in enumerations:
            yield f"    {key['key']} = Enumeration({camel(key['type'])})\n"
        elif key["type"] in ATTRIBUTES:
            yield f"    {key['key']} = {ATTRIBUTES[key['type']]}\n"


def pools(schema):
    """The text of pools.py."""
    text = '''# SPDX-License-Identifier: Apache-2.0
"""The kinds of pools. Made by python/generate.py; do not edit."""

from __future__ import annotations

from ._interface import OpenEnum
from ._library import Text
from .fields import Date, Enumeration, Number, Pool, Record, String, Value, boolean
'''
    for name, members in schema["enumerations"].items():
        text += f"\n\nclass {camel(name)}(OpenEnum):\n"
        text += "".join(f"    {member} = {number}\n"
                        for number, member in enumerate(members) if member)
    for pool in schema["pools"]:
        adders = ""
        for key in pool["keys"]:
            if not key["type"].startswith("list"):
                continue
            one = key["key"].removesuffix("s")
            if "of" not in key:
                adders += f"\n    def add_{snake(one)}(self, value: str | bytes) -> None:\n"
                adders += f'        self._set_string(b"{key["key"]}", value)\n'
                continue
            record = camel(f"{pool['kind']}_{one}" if one == "step" else one)
            first = next(field["key"] for field in key["of"] if field["type"] == "string")
            text += f"\n\nclass {record}(Record):\n    __slots__ = ()\n"
            text += "".join(attributes(key["of"], schema["enumerations"]))
            adders += (f"\n    def add_{snake(one)}(self, {first}: Text = None, **values: Value)"
                       f" -> {record}:\n        return self._add_record({record}, "
                       f'b"{key["key"]}", {{"{first}": {first}, **values}})\n')
        text += f"\n\nclass {camel(pool['kind'])}Pool(Pool):\n    __slots__ = ()\n"
        text += f'    _kind = b"{pool["kind"]}"\n'
        text += "".join(attributes(pool["keys"], schema["enumerations"])) + adders
    names = ", ".join(f'"{name}"' for name in re.findall(r"^class (\w+)", text, re.MULTILINE))
    return text + "\n\n" + wrapped(f"__all__ = [{names}]", 11) + "\n"


def generated():
    """The texts of the modules."""
    library = ctypes.CDLL(os.environ["ZTPORTAL_LIBRARY"])
    library.zt_schema.restype = ctypes.c_char_p
    header = HEADER.read_text()
    return {"_interface.py": interface(header), "receipts.py": receipts(header),
            "pools.py": pools(json.loads(library.zt_schema()))}


if __name__ == "__main__":
    for name, text in generated().items():
        (PACKAGE / name).write_text(text)
