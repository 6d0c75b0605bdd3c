#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Describes every plug-in's parameters to Kdenlive, one file each, from the catalogue and what `vireo info` tells.

kdenlive_effects.py VIREO FOLDER
"""

import json
import subprocess
import sys
from pathlib import Path
from xml.etree import ElementTree

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "resources"))
import generate

# Bend stores its choices under names that only projects know. How they are shown, and the list of their words.
BEND_CHOICES = {
    "Horizontal Frequency": ("Horizontal Direction", "2000"),
    "Horizontal Source": ("Horizontal Wave", "2001"),
    "Vertical Frequency": ("Vertical Direction", "2002"),
    "Vertical Source": ("Vertical Wave", "2003"),
}

# The filters whose plug-ins read time. Kdenlive hands out seconds.
TIMED = {"Bend", "Ghosting", "Horizontal Hold", "Vertical Hold"}
FRAME_RATES = {
    "": "Counted",
    "24000/1001": "23.98",
    "24": "24",
    "25": "25",
    "30000/1001": "29.97",
    "30": "30",
    "50": "50",
    "60000/1001": "59.94",
    "60": "60",
}


def plain(value):
    return f"{value:.12g}"


def add_parameter(effect, name, label, comment="", **attributes):
    parameter = ElementTree.SubElement(effect, "parameter", name=name, **attributes)
    ElementTree.SubElement(parameter, "name").text = label
    if comment:
        ElementTree.SubElement(parameter, "comment").text = comment
    return parameter


def add_list(effect, name, label, values, default):
    parameter = add_parameter(effect, name, label, type="list", default=default, paramlist=";".join(values))
    ElementTree.SubElement(parameter, "paramlistdisplay").text = ",".join(values.values())


def add_number(effect, name, minimum, maximum, default):
    """Plug-ins take 0 to 1. Kdenlive multiplies but cannot add: what begins elsewhere than at 0 is counted from
    there."""
    steps = maximum - minimum
    comment = f"Counted from {minimum}: {-minimum} stands for 0." if minimum < 0 else ""
    if minimum > 0:
        comment = f"Counted from {minimum}: 0 stands for {minimum}."
    add_parameter(
        effect, name, name, comment, type="animated", default=plain((default - minimum) / steps), min="0",
        max=str(steps), factor=str(steps), decimals="0")


def describe(entry, info):
    service = f"frei0r.vireo_{generate.file_name(entry)}"
    effect = ElementTree.Element("effect", tag=service, id=service)
    ElementTree.SubElement(effect, "name").text = "Vireo " + entry["name"]
    ElementTree.SubElement(effect, "description").text = f"{entry['name']} ({entry['category']})"
    ElementTree.SubElement(effect, "author").text = "The Vireo Filters developers"
    for parameter in info["parameters"]:
        name = parameter["name"]
        default = parameter["default"]
        if parameter["kind"] == "boolean":
            add_parameter(effect, name, name, type="bool", default=str(int(default)))
        elif parameter["kind"] == "colour":
            add_parameter(effect, name, name, type="color", default=f"0x{default.lstrip('#')}ff")
        elif entry["name"] == "Bend" and name in BEND_CHOICES:
            label, number = BEND_CHOICES[name]
            words = [key.partition("=")[2] for key in generate.read("text_lists.toml")[number]]
            values = {plain(k / (len(words) - 1)): word for k, word in enumerate(words)}
            add_list(effect, name, label, values, list(values)[default])
        else:
            add_number(effect, name, int(parameter["minimum"]), int(parameter["maximum"]), default)
    if entry["name"] in TIMED:
        add_list(effect, "Frame Rate", "Frame Rate", FRAME_RATES, "")
    return effect


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    program, folder = sys.argv[1], Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    for entry in generate.read("filters.toml")["filter"]:
        answer = subprocess.run([program, "info", "--json", str(entry["id"])], check=True, capture_output=True)
        effect = describe(entry, json.loads(answer.stdout))
        ElementTree.indent(effect, "    ")
        text = ElementTree.tostring(effect, encoding="unicode")
        path = folder / f"vireo_{generate.file_name(entry)}.xml"
        path.write_text(f'<?xml version="1.0"?>\n<!DOCTYPE kpartgui>\n{text}\n', encoding="utf-8")


if __name__ == "__main__":
    main()
