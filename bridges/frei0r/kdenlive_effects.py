#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Describes every plug-in's parameters to Kdenlive, one file each.

kdenlive_effects.py FOLDER VIREO...
"""

import math
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))
from kdenlive_description import Effect, descriptions

# Kdenlive hands out seconds. A rate finds the same frame however often and from wherever it is shown.
FRAME_RATES = {
    "24000/1001": "23.98",
    "24": "24",
    "25": "25",
    "30000/1001": "29.97",
    "30": "30",
    "50": "50",
    "60000/1001": "59.94",
    "60": "60",
    "": "Counted",
}


def fraction(steps, of):
    """Twelve digits, and never below the number: Kdenlive cuts off what stands behind the point."""
    digits = 10**12
    return f"{math.ceil(steps * digits / of) / digits:.12g}"


def add_number(effect, parameter):
    """Plug-ins take 0 to 1. Kdenlive multiplies but cannot add: what begins elsewhere than at 0 is counted from
    there."""
    minimum = parameter.minimum
    steps = parameter.maximum - minimum
    comment = f"Counted from {minimum}: {-minimum} stands for 0." if minimum < 0 else ""
    if minimum > 0:
        comment = f"Counted from {minimum}: 0 stands for {minimum}."
    effect.add(
        parameter.name, parameter.name, comment, type="animated", default=fraction(parameter.default - minimum, steps),
        min="0", max=str(steps), factor=str(steps), decimals="0")


def describe(filter):
    effect = Effect(f"frei0r.vireo_{filter.file}", f"Vireo {filter.name()} (frei0r)", filter.summary)
    for parameter in filter.parameters:
        if parameter.kind != "number":
            effect.add_plain(parameter)
        elif parameter.choices:
            last = len(parameter.choices) - 1
            values = {f"{k / last:.12g}": word() for k, word in enumerate(parameter.choices)}
            effect.add_list(parameter.name, parameter.label(), values, list(values)[parameter.default])
        else:
            add_number(effect, parameter)
    if filter.reads_time:
        effect.add_list("Frame Rate", "Frame Rate", FRAME_RATES, "25", "The project's")
    return effect


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    for filter in descriptions.filters(sys.argv[2:]):
        describe(filter).write(Path(sys.argv[1]) / f"vireo_{filter.file}.xml")


if __name__ == "__main__":
    main()
