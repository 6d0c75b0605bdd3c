# SPDX-License-Identifier: MIT
"""What other programs' descriptions of the filters are made from: the catalogue, its texts in every language, what
`vireo info` tells of the start values, and the notes of the filters' pages."""

import dataclasses
import json
import subprocess
import sys
import tomllib
from functools import cache
from pathlib import Path

import generate

ROOT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "host/mtkcore"))
import generate_catalogues

LANGUAGES = ("en", *generate_catalogues.PRIMARY_LANGUAGES)
MIX = "$$$/Page/Mix=Mix"


@cache
def catalogue(language):
    path = ROOT / f"host/mtkcore/languages/{language}.po"
    return {key: text for key, _, text in generate_catalogues.read_entries(path)}


@dataclasses.dataclass(frozen=True)
class Text:
    """A text by its key, "$$$/Page/Mix=Mix"; plain text is the same in every language."""

    key: str

    def __call__(self, language="en"):
        key, _, english = self.key.rpartition("=")
        return english if language == "en" or not key else catalogue(language).get(key, english)


@dataclasses.dataclass(frozen=True)
class Parameter:
    name: str  # as the command line takes it
    label: Text
    kind: str  # "number", "colour" or "boolean"
    default: int | bool | str
    minimum: int = 0
    maximum: int = 0
    unit: str = ""  # of the stored numbers
    choices: tuple[Text, ...] = ()
    note: str = ""  # English


@dataclasses.dataclass(frozen=True)
class Filter:
    name: Text
    category: Text
    file: str
    summary: str  # English
    parameters: tuple[Parameter, ...]
    reads_time: bool

    @property
    def service(self):
        return "vireo." + self.file.replace("_", "-")


def mix():
    return Parameter("mix", Text(MIX), "number", 100, 0, 100, "%", note="how much of the filter shows")


def describe(entry, told):
    """A filter of the catalogue, with what `vireo info --json` tells of it."""
    filter = generate.Filter(entry)
    file = generate.file_name(entry)
    page = ROOT / f"docs/filters/notes/{file.replace('_', '-')}.toml"
    notes = tomllib.loads(page.read_text(encoding="utf-8")) if page.exists() else {"summary": filter.name}
    parameters = []
    for row, known in zip(filter.parameters, told["parameters"], strict=True):
        label = row.get("label", row["name"])
        words = generate.read("text_lists.toml")[str(row["choices"])] if "choices" in row else []
        whole = row.get("display", row.get("range")) == row.get("range")
        parameters.append(Parameter(
            row["name"],
            Text(filter.key(generate.without(label, " ()"), label)),
            known["kind"],
            known["default"],
            int(known["minimum"]),
            int(known["maximum"]),
            row.get("unit", "") if whole else "",
            tuple(map(Text, words)),
            notes.get("parameters", {}).get(row["name"], "").removesuffix(", see below"),
        ))
    return Filter(
        Text(filter.key("Name", filter.name)), Text(generate.category_text(filter.category)), file, notes["summary"],
        tuple(parameters), entry.get("reads_time", False))


def filters(vireo):
    """Every filter, in the order of the catalogue, as the program tells that these words call."""
    for entry in generate.read("filters.toml")["filter"]:
        answer = subprocess.run([*vireo, "info", "--json", str(entry["id"])], check=True, capture_output=True)
        yield describe(entry, json.loads(answer.stdout))
