#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Describes the filters' services to Kdenlive: a folder of files for each language, and groups, a line for each of
Kdenlive's groups with the services that stand in it.

effects.py FOLDER VIREO...
"""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2]))
from kdenlive_description import Effect, descriptions, group


def add_number(effect, parameter, language):
    attributes = {"suffix": parameter.unit} if parameter.unit else {}
    effect.add(
        parameter.name, parameter.label(language), parameter.note, type="animated", default=str(parameter.default),
        min=str(parameter.minimum), max=str(parameter.maximum), decimals="0", **attributes)


def describe(filter, language):
    effect = Effect(filter.service, f"Vireo {filter.name(language)}", filter.summary)
    for parameter in (*filter.parameters, descriptions.mix()):
        if parameter.kind != "number":
            effect.add_plain(parameter, language, parameter.note)
        elif parameter.choices:
            values = {str(parameter.minimum + k): word(language) for k, word in enumerate(parameter.choices)}
            effect.add_list(parameter.name, parameter.label(language), values, str(parameter.default), parameter.note)
        else:
            add_number(effect, parameter, language)
    return effect


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    folder = Path(sys.argv[1])
    groups = {}
    for filter in descriptions.filters(sys.argv[2:]):
        if group(filter):
            groups.setdefault(group(filter), []).append(filter.service)
        for language in descriptions.LANGUAGES:
            describe(filter, language).write(folder / language / f"vireo_mlt_{filter.file}.xml")
    lines = [f"{name}\t{','.join(services)}\n" for name, services in sorted(groups.items())]
    (folder / "groups").write_text("".join(lines), encoding="utf-8")


if __name__ == "__main__":
    main()
