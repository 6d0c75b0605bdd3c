# SPDX-License-Identifier: MIT
"""The page of the engine names every function of its header in its table and no other, and every layout and depth."""
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]
HEADER = (ROOT / "engine/include/vireo/vireo.h").read_text()
PAGE = (ROOT / "docs/engine.md").read_text()


def test_the_table_has_every_call_once():
    functions = re.findall(r"^VIREO_API [\w* ]+?\b(vireo\w+)\(", HEADER, flags=re.MULTILINE)
    assert len(functions) == HEADER.count("\nVIREO_API ") > 40
    table = PAGE.split("## The calls")[1].split("##")[0]
    named = "".join(re.findall(r"^\| (`vireo[^|]*)\|", table, flags=re.MULTILINE))
    assert sorted(re.findall(r"`(vireo\w+)`", named)) == sorted(functions)
    # The rest speaks of nothing else.
    assert set(re.findall(r"\b(vireo[A-Z]\w*)\b", PAGE)) <= {*functions, "vireoHost"}
    for body in re.findall(r"typedef enum Vireo(?:Layout|Depth) \{(.*?)\}", HEADER, flags=re.DOTALL):
        for name in set(re.findall(r"\b(Vireo\w+) =", body)) - {"VireoDepth8"}:
            assert f"`{name}`" in PAGE, name
