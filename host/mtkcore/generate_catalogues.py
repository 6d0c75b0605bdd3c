#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes catalogues.cpp from the languages' .po files.

Each entry's context is the key without "=", its message the English text. An entry without a translation is an
error: the catalogues are complete.
"""
import argparse
import ast
import pathlib

PRIMARY_LANGUAGES = {"de": 0x07, "es": 0x0A, "fr": 0x0C, "it": 0x10, "ja": 0x11, "ko": 0x12}


def read_entries(path):
    """The (key, English text, translation) of each entry of a .po file, its header left out."""
    entries = []
    fields = {}
    field = None
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines() + [""], 1):
        line = line.strip()
        if not line:
            if fields.get("msgctxt"):
                entries.append((fields["msgctxt"], fields.get("msgid"), fields.get("msgstr", "")))
            fields = {}
        elif line.startswith('"'):
            fields[field] += ast.literal_eval(line)
        elif not line.startswith("#"):
            field, _, text = line.partition(" ")
            if field not in ("msgctxt", "msgid", "msgstr"):
                raise SystemExit(f"{path}:{number}: unexpected line")
            fields[field] = ast.literal_eval(text)
    for key, _, translation in entries:
        if not translation:
            raise SystemExit(f"{path}: {key} has no translation")
    if len({key for key, _, _ in entries}) != len(entries):
        raise SystemExit(f"{path}: a key stands twice")
    return sorted(entries)


def quoted(text, prefix=""):
    escapes = {'"': '\\"', "\\": "\\\\", "\n": "\\n"}
    return prefix + '"' + "".join(escapes.get(character, character) for character in text) + '"'


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--output", required=True, type=pathlib.Path)
    parser.add_argument("catalogues", nargs="+", type=pathlib.Path)
    arguments = parser.parse_args()

    # Their lengths in the literals: counted by the compiler, these would take it twenty seconds, and a program its start.
    lines = ['#include "host/mtkcore/catalogues.h"', "", "namespace mtkcore::config {", "namespace {", "",
             "using namespace std::string_view_literals;", ""]
    for path in arguments.catalogues:
        entries = read_entries(path)
        lines.append(f"constexpr CatalogueEntry {path.stem}[] = {{")
        lines += [f"    {{{quoted(key)}sv, {quoted(text, 'u')}sv}}," for key, _, text in entries]
        lines += ["};", ""]
    lines.append("constexpr Catalogue all[] = {")
    lines += [f"    {{{PRIMARY_LANGUAGES[path.stem]:#04x}, {path.stem}}}," for path in arguments.catalogues]
    lines += ["};", "", "}  // namespace", "", "const std::span<const Catalogue> catalogues = all;", ""]
    lines += ["}  // namespace mtkcore::config", ""]
    arguments.output.write_text("\n".join(lines), encoding="utf-8")


if __name__ == "__main__":
    main()
