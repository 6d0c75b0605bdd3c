#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Describes the filters' services to Shotcut: what its list says of each, and a panel.

panels.py FOLDER VIREO...
"""

import json
import re
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[3] / "resources"))
import descriptions

META = """// Written by panels.py; do not edit.
import QtQuick 2.0
import org.shotcut.qml 1.0
import "language.js" as Language

Metadata {{
    type: Metadata.Filter
    name: 'Vireo: ' + {name}
    keywords: 'vireo {words} ' + {name} + ' ' + {category}
    mlt_service: '{service}'
    qml: '{file}.qml'
    icon: 'icons/{icon}.webp'

    keyframes {{
        allowAnimateIn: true
        allowAnimateOut: true
        simpleProperties: {properties}
        parameters: [
{parameters}
        ]
    }}
}}
"""

KEYFRAMES = """            Parameter {{
                name: {name}
                property: {property}
                isCurve: true
                minimum: {minimum}
                maximum: {maximum}
            }}"""

PANEL = """// Written by panels.py; do not edit.
import "language.js" as Language

Panel {{
    controls: [
{controls}
    ]
}}
"""

GROUP = re.compile(r"\((\w+)\) ")


def literal(value):
    return json.dumps(value, ensure_ascii=False)


def translated(text, without=None):
    """The JavaScript of a text in the user's language."""
    texts = {language: text(language) for language in descriptions.LANGUAGES}
    if without:
        texts = {language: without.sub("", shown) for language, shown in texts.items()}
    different = {language: shown for language, shown in texts.items() if language == "en" or shown != texts["en"]}
    return literal(texts["en"]) if len(different) == 1 else f"Language.text({literal(different)})"


def fields(**values):
    return "        {" + ", ".join(f"{name}: {value}" for name, value in values.items()) + "}"


def control(parameter):
    rest = {"property": literal(parameter.name), "label": translated(parameter.label, GROUP),
            "note": literal(parameter.note), "initial": literal(parameter.default)}
    if parameter.kind == "boolean":
        return fields(kind="'Check'", **rest)
    if parameter.kind == "colour":
        return fields(kind="'Color'", **rest)
    if parameter.choices:
        words = ", ".join(map(translated, parameter.choices))
        return fields(kind="'Choice'", minimum=parameter.minimum, words=f"[{words}]", **rest)
    unit = literal((" " if parameter.unit.isalpha() or parameter.unit == "%" else "") + parameter.unit)
    return fields(kind="'Number'", minimum=parameter.minimum, maximum=parameter.maximum, unit=unit, **rest)


def controls(parameters):
    """Those of a group, as "(RGB) Gamma" is one's, stand below its name."""
    group = None
    for parameter in parameters:
        match = GROUP.match(parameter.name)
        if match and match.group(1) != group:
            yield fields(kind="'Heading'", label=literal(match.group(1)))
        elif group and not match:
            yield fields(kind="'Heading'", label=literal(""))
        group = match and match.group(1)
        yield control(parameter)


def write(filter, folder):
    parameters = (*filter.parameters, descriptions.mix())
    numbers = [parameter for parameter in parameters if parameter.kind == "number" and not parameter.choices]
    name = translated(filter.name)
    meta = META.format(
        name=name,
        words=filter.name().lower(),
        category=translated(filter.category),
        service=filter.service,
        file=filter.file,
        icon=filter.file.replace("_", "-"),
        properties=literal([parameter.name for parameter in numbers]),
        parameters=",\n".join(
            KEYFRAMES.format(name=translated(parameter.label), property=literal(parameter.name),
                             minimum=parameter.minimum, maximum=parameter.maximum)
            for parameter in numbers))
    (folder / f"meta_{filter.file}.qml").write_text(meta, encoding="utf-8")
    (folder / f"{filter.file}.qml").write_text(PANEL.format(controls=",\n".join(controls(parameters))), encoding="utf-8")


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    folder = Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    for filter in descriptions.filters(sys.argv[2:]):
        write(filter, folder)


if __name__ == "__main__":
    main()
