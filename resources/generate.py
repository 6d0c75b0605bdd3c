#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the module's binary resources and the host's table of traits from the readable files beside this one.

generate.py linked OUT.cpp   one C++ file that defines linkedResources, for platforms whose libraries hold none
generate.py windows OUT.rc   a resource script, and the files that it names in a folder beside it
generate.py traits OUT.cpp   one C++ file that defines the table of host/hosting/filter_traits_table.h
generate.py names            one line a filter: its id and its name as files take it
"""

import json
import math
import struct
import sys
import tomllib
from pathlib import Path

HERE = Path(__file__).parent

CONTROLS = {"number": 2, "color": 12, "checkbox": 13}
VALUE_TYPES = {"number": 2, "color": 5, "checkbox": 8}
FLAGS = {"number": 8, "color": 8, "checkbox": 0}
VALUE_BYTES = {"number": 2, "color": 4, "checkbox": 1}

FILTER_KEYS = {"id", "name", "category", "key", "match_name", "old", "descriptor", "parameters", "reads_time",
               "earlier_frames", "limits", "rows", "neighbour_rows", "maps_channels", "needs_filling", "identity", "touches_gaps", "counts_pixels"}
PARAMETER_KEYS = {"name", "kind", "range", "display", "bytes", "control", "value_type", "flags", "unit", "label",
                  "choices", "in_pixels"}
LIMITS = {"width": "width", "height": "height", "row_bytes": "rowBytes"}


# Property lists.


def code(characters):
    """A four-character code; its first character is stored in the most significant byte."""
    return characters.encode("ascii")[::-1]


def prefixed(text):
    """A length byte and the text, followed by one to four zeros up to a multiple of four bytes."""
    data = bytes([len(text)]) + text.encode("ascii")
    return data.ljust((len(text) + 5) // 4 * 4, b"\0")


def zero_padded(text, size):
    data = text.encode("ascii")
    if len(data) >= size:
        raise ValueError(f'"{text}" takes more than {size - 1} bytes')
    return data.ljust(size, b"\0")


def without(text, characters):
    return "".join(c for c in text if c not in characters)


def category_text(category):
    if category == "Obsolete":
        return category
    word = category.replace("&", "And").replace(" ", "")
    return f"$$$/Strata/FiltersAndEffects/Category/{word}={category}"


class Filter:
    def __init__(self, entry):
        self.entry = entry
        self.id = entry["id"]
        self.name = entry["name"]
        self.category = entry["category"]
        self.segment = entry.get("key", without(self.name, " "))
        self.match_name = entry.get("match_name", "QULN " + self.name)
        self.old = entry.get("old", False)
        self.descriptor = entry.get("descriptor", {})
        self.parameters = entry.get("parameters", [])
        self.check_keys(entry, FILTER_KEYS)
        self.check_keys(entry.get("limits", {}), LIMITS.keys())
        for parameter in self.parameters:
            self.check_keys(parameter, PARAMETER_KEYS)

    def check_keys(self, table, known):
        unknown = table.keys() - known
        if unknown:
            raise ValueError(f"{self.name} has {', '.join(sorted(unknown))}, which mean nothing")

    def key(self, word, text):
        return f"$$$/Strata/VireoFilters/{self.segment}/{word}={text}"

    def property_list(self):
        properties = [
            ("kind", 0, code("VFlt")),
            ("name", 0, prefixed(self.key("Name", self.name))),
            ("eMNA", 0, prefixed(self.match_name)),
            ("catg", 0, prefixed(category_text(self.category))),
        ]
        if self.old:
            properties.append(("wx86", 0, zero_padded("xFilter", 12)))
        properties += [
            ("ePVR", 0, struct.pack("<HH", 2, 3 if self.parameters else 1)),
            ("eSVR", 0, struct.pack("<i", 3)),
            ("eVER", 0, bytes.fromhex("00 00 30 00" if self.old else "00 06 30 00")),
        ]
        if self.parameters or self.descriptor:
            properties.append(("aFLT", 0, self.filter_descriptor()))
        for index, parameter in enumerate(self.parameters):
            properties.append(("aPAR", index, self.parameter_descriptor(index + 1, parameter)))

        data = struct.pack("<Hii", 1, 0, len(properties))
        for key, number, content in properties:
            data += code("QLNX") + code(key) + struct.pack("<II", number, len(content)) + content
        return data

    def filter_descriptor(self):
        variant = self.descriptor.get("variant", 2)
        flags = self.descriptor.get("flags", 0x1020C)
        numbers = struct.pack("<iiiii", 1, variant, 0, flags, len(self.parameters))
        return numbers + zero_padded(self.match_name, 48)

    def parameter_descriptor(self, number, parameter):
        kind = parameter["kind"]
        name = parameter["name"]
        bounds = parameter["range"] if kind == "number" else [0, 0]
        display = parameter.get("display", bounds)
        return (
            zero_padded(self.key(without(name, " ()"), name), 96)
            + struct.pack(
                "<iii",
                number,
                parameter.get("control", CONTROLS[kind]),
                parameter.get("value_type", VALUE_TYPES[kind]),
            )
            + struct.pack("<4d", *bounds, *display)
            + struct.pack("<Ii", parameter.get("flags", FLAGS[kind]), parameter.get("bytes", VALUE_BYTES[kind]))
            + bytes(16)
        )


# Traits as C++.


def literal(text):
    """A C++ string in ASCII; other characters stand as the octal bytes of their UTF-8."""
    data = json.dumps(text, ensure_ascii=False).encode()
    return "".join(chr(byte) if byte < 128 else f"\\{byte:03o}" for byte in data)


def array(kind, name, rows):
    """The definition of an array and how it is named; nothing for an empty one."""
    if not rows:
        return "", "{}"
    return f"constexpr {kind} {name}[] = {{\n" + "".join(f"    {row},\n" for row in rows) + "};\n\n", name


class Traits:
    """Of a filter, as C++."""

    def __init__(self, filter):
        self.filter = filter
        self.entry = filter.entry
        self.names = [parameter["name"] for parameter in filter.parameters]

    def stored(self, value):
        """As the settings record holds it: colours with red in the low byte."""
        if isinstance(value, str):
            return int.from_bytes(bytes.fromhex(value.removeprefix("#")), "little")
        return int(value)

    def parameter(self, parameter):
        text = parameter.get("label", parameter["name"])
        label = self.filter.key(without(text, " ()"), text)
        choices = f"choices{parameter['choices']}" if "choices" in parameter else "{}"
        in_pixels = str(parameter.get("in_pixels", False)).lower()
        return f"{{{literal(parameter.get('unit', ''))}, {literal(label)}, {choices}, {in_pixels}}}"

    def definitions(self):
        """The arrays that the filter's row names, and the row."""
        identity, identity_name = array(
            "IdentityValue", f"identity{self.filter.id}",
            [f"{{{self.names.index(name)}, {self.stored(value)}}}"
             for name, value in self.entry.get("identity", {}).items()])
        parameters, parameters_name = array(
            "ParameterTraits", f"parameters{self.filter.id}",
            [self.parameter(parameter) for parameter in self.filter.parameters])
        limits = [f".{LIMITS[key]} = {value}" for key, value in self.entry.get("limits", {}).items()]
        needs_filling = self.entry.get("needs_filling", False)
        rows = self.entry.get("rows", "any")
        if rows not in ("any", "bottom-up"):
            raise ValueError(f'{self.filter.name} cannot have its rows "{rows}"')
        fields = {
            "id": self.filter.id,
            "matchName": literal(self.filter.match_name),
            "fileName": literal(file_name(self.entry)),
            "limits": f"{{{', '.join(limits)}}}",
            "readsTime": str(self.entry.get("reads_time", False)).lower(),
            "earlierFrames": self.entry.get("earlier_frames", 0),
            "takesRowsFromTheTop": str(rows == "any").lower(),
            "unwrittenRows": "std::nullopt" if needs_filling is True else int(needs_filling),
            "neighbourRows": self.entry.get("neighbour_rows", "std::nullopt"),
            "mapsChannels": str(self.entry.get("maps_channels", False)).lower(),
            "identity": identity_name,
            "touchesGaps": str(self.entry.get("touches_gaps", False)).lower(),
            "countsPixels": str(self.entry.get("counts_pixels", False)).lower(),
            "parameters": parameters_name,
        }
        return identity + parameters, "{" + ", ".join(f".{name} = {value}" for name, value in fields.items()) + "}"


# Bend's waves: one period in 4000 steps of 16 bits, at most 32000.


def sine(i):
    # The short value of pi is part of the table: old projects never see a peak of 32000.
    return int(32000 * math.sin(i * 3.14159 / 2000))


def circle(i):
    # The negative half is one step ahead of the positive one, as old projects know it.
    x = i - 1000 if i < 2000 else i - 2999
    height = int(32 * math.sqrt(1000000 - x * x))
    return height if i < 2000 else -height


def triangle(i):
    if i <= 1000:
        return 32 * i
    if i <= 3000:
        return 32000 - 32 * (i - 1000)
    return -32000 + 32 * (i - 3000)


def square(i):
    return 32000 if i < 2000 else -32000


def wave_table(wave):
    return struct.pack("<4000h", *map(wave, range(4000)))


def text_list(keys):
    return b"".join(key.encode("ascii") + b"\0" for key in keys) + b"\0"


# Icons and cursors.


def image_file(kind, pixels, colors, hotspot=(0, 0)):
    """An .ico (kind 1) or .cur (kind 2) file with one picture of 32 x 32 pixels."""
    size = 32
    picture = {
        (x, y): colors[c] for y, line in enumerate(pixels.split()) for x, c in enumerate(line) if c in colors
    }
    color_rows = b""
    mask_rows = b""
    for y in reversed(range(size)):
        mask = 0
        for x in range(size):
            color = picture.get((x, y))
            color_rows += bytes([*reversed(color), 255]) if color else bytes(4)
            mask = mask << 1 | (color is None)
        mask_rows += struct.pack(">I", mask)
    header = struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 32, 0, len(color_rows), 0, 0, 0, 0)
    bitmap = header + color_rows + mask_rows
    planes_or_hotspot = (1, 32) if kind == 1 else hotspot
    directory = struct.pack("<HHHBBBBHHII", 0, kind, 1, size, size, 0, 0, *planes_or_hotspot, len(bitmap), 22)
    return directory + bitmap


def images():
    """(type, id, file) of every icon and cursor."""
    for image in read("images.toml").values():
        for number, colors in image.get("icons", {}).items():
            yield "ICON", int(number), image_file(1, image["pixels"], colors)
        for number, colors in image.get("cursors", {}).items():
            hotspot = colors.pop("hotspot")
            yield "CURSOR", int(number), image_file(2, image["pixels"], colors, hotspot)


# Output.


def read(name):
    with open(HERE / name, "rb") as file:
        return tomllib.load(file)


def resources():
    """(type, id, bytes) of every resource of the types that are our own."""
    for entry in read("filters.toml")["filter"]:
        yield "PiPL", entry["id"], Filter(entry).property_list()
    for number, wave in enumerate([sine, circle, triangle, square], start=4000):
        yield "LOOKUP", number, wave_table(wave)
    for number, keys in read("text_lists.toml").items():
        yield "TEXT", int(number), text_list(keys)


def write_linked(output):
    arrays = []
    rows = []
    for kind, number, data in resources():
        name = f"{kind.lower()}{number}"
        lines = [
            "    " + "".join(f"{byte}," for byte in data[start : start + 32]) for start in range(0, len(data), 32)
        ]
        arrays.append(f"alignas(8) constexpr std::uint8_t {name}[] = {{\n" + "\n".join(lines) + "\n};\n")
        rows.append(f'    {{u"{kind}", {number}, {name}, sizeof {name}}},\n')
    output.write_text(
        "// Generated; do not edit.\n"
        '#include "resources/linked_resources.h"\n\n'
        "namespace {\n\n" + "\n".join(arrays) + "\n}  // namespace\n\n"
        "const QRB::LinkedResource linkedResources[] = {\n" + "".join(rows) + "    {nullptr, 0, nullptr, 0},\n};\n"
    )


def write_windows(output):
    folder = output.with_suffix("")
    folder.mkdir(exist_ok=True)
    lines = ["// Generated; do not edit."]
    for kind, number, data in [*resources(), *images()]:
        file = folder / f"{kind.lower()}-{number}.bin"
        file.write_bytes(data)
        # Named types are found by their upper-case name, whatever case the caller asks in.
        lines.append(f'{number} {kind.upper()} "{folder.name}/{file.name}"')
    output.write_text("\n".join(lines) + "\n")


def write_traits(output):
    lists = [array("std::string_view", f"choices{number}", map(literal, keys))[0]
             for number, keys in read("text_lists.toml").items()]
    definitions = [Traits(Filter(entry)).definitions() for entry in read("filters.toml")["filter"]]
    table, name = array("FilterTraits", "filters", [row for _, row in definitions])
    output.write_text(
        "// Generated; do not edit.\n"
        '#include "host/hosting/filter_traits_table.h"\n\n'
        "namespace hosting {\nnamespace {\n\n" + "".join(lists) + "".join(arrays for arrays, _ in definitions) + table
        + f"}}  // namespace\n\nconstinit const std::span<const FilterTraits> knownFilters = {name};\n\n"
        "}  // namespace hosting\n", encoding="ascii"
    )


def file_name(entry):
    words = entry["name"].replace("&", "and").replace("(RGB)", "").split()
    return "_".join(words).lower()


def print_names():
    for entry in read("filters.toml")["filter"]:
        print(entry["id"], file_name(entry))


def main():
    if sys.argv[1:] == ["names"]:
        print_names()
        return
    writers = {"linked": write_linked, "windows": write_windows, "traits": write_traits}
    if len(sys.argv) != 3 or sys.argv[1] not in writers:
        sys.exit(__doc__)
    writers[sys.argv[1]](Path(sys.argv[2]))


if __name__ == "__main__":
    main()
