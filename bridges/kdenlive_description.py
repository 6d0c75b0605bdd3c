# SPDX-License-Identifier: MIT
"""Effects as Kdenlive's files describe them, whichever service renders them."""

import sys
from pathlib import Path
from xml.etree import ElementTree

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "resources"))
import descriptions

# Kdenlive's own groups, where those of the filters' categories stand.
GROUPS = {
    "Adjust": "Color and Image correction",
    "Blur & Sharpen": "Blur and Sharpen",
    "Distort": "Transform, Distort and Perspective",
    "Image Control": "Color and Image correction",
    "Stylize": "Stylize",
    "Transform": "Transform, Distort and Perspective",
    "antialias": "Blur and Sharpen",
    "bend": "Transform, Distort and Perspective",
    "camera_view": "Transform, Distort and Perspective",
    "ghosting": "Motion",
    "horizontal_hold": "Motion",
    "vertical_hold": "Motion",
}


def group(filter):
    """None where Kdenlive's own choice has to do."""
    return GROUPS.get(filter.file) or GROUPS.get(filter.category())


class Effect:
    def __init__(self, service, name, description):
        self.service = service
        self.element = ElementTree.Element("effect", tag=service, id=service)
        ElementTree.SubElement(self.element, "name").text = name
        ElementTree.SubElement(self.element, "description").text = description
        ElementTree.SubElement(self.element, "author").text = "The Vireo Filters developers"

    def add(self, name, label, comment="", **attributes):
        parameter = ElementTree.SubElement(self.element, "parameter", name=name, **attributes)
        ElementTree.SubElement(parameter, "name").text = label
        if comment:
            ElementTree.SubElement(parameter, "comment").text = comment
        return parameter

    def add_list(self, name, label, values, default, comment=""):
        """`values` are the words by what the service takes."""
        parameter = self.add(name, label, comment, type="list", default=default, paramlist=";".join(values))
        ElementTree.SubElement(parameter, "paramlistdisplay").text = ",".join(values.values())

    def add_plain(self, parameter, language="en", comment=""):
        """A check box or a colour."""
        if parameter.kind == "boolean":
            attributes = {"type": "bool", "default": str(int(parameter.default))}
        else:
            attributes = {"type": "color", "default": f"0x{parameter.default.lstrip('#')}ff"}
        self.add(parameter.name, parameter.label(language), comment, **attributes)

    def write(self, path):
        ElementTree.indent(self.element, "    ")
        text = ElementTree.tostring(self.element, encoding="unicode")
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(f'<?xml version="1.0"?>\n<!DOCTYPE kpartgui>\n{text}\n', encoding="utf-8")
