# SPDX-License-Identifier: MIT
"""The page of the engine names every function of its header in its table, and no other."""
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]


def test_the_table_has_every_call_once():
    header = (ROOT / "engine/include/vireo/vireo.h").read_text()
    functions = re.findall(r"^VIREO_API [\w* ]+?\b(vireo\w+)\(", header, flags=re.MULTILINE)
    assert len(functions) == header.count("\nVIREO_API ") > 40
    page = (ROOT / "docs/engine.md").read_text()
    table = page.split("## The calls")[1].split("##")[0]
    named = [name for row in re.findall(r"^\| (`vireo[^|]*)\|", table, flags=re.MULTILINE)
             for name in re.findall(r"`(vireo\w+)`", row)]
    assert sorted(named) == sorted(functions)
    # The rest speaks of nothing else.
    assert {name for name in re.findall(r"\b(vireo[A-Z]\w*)\b", page)} <= {*functions, "vireoHost"}


def test_layouts_and_depths_are_told():
    header = (ROOT / "engine/include/vireo/vireo.h").read_text()
    page = (ROOT / "docs/engine.md").read_text()
    for enumeration in ("VireoLayout", "VireoDepth"):
        body = re.search(r"typedef enum %s \{(.*?)\}" % enumeration, header, flags=re.DOTALL)[1]
        for name in set(re.findall(r"\b(Vireo\w+) =", body)) - {"VireoDepth8"}:
            assert f"`{name}`" in page, name
