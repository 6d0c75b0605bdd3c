# SPDX-License-Identifier: MIT
"""Runs every block of Python of its page, in the order in which a reader meets them."""
import pathlib
import re

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs/python.md"
BLOCK = re.compile(r"(<!-- not run: [^>]+ -->\n\n)?```python\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def test_the_page_begins_with_five_lines_and_works(tmp_path, monkeypatch, capsys):
    monkeypatch.chdir(tmp_path)
    text = PAGE.read_text(encoding="utf-8")
    blocks = list(BLOCK.finditer(text))
    assert blocks[0].start() < 60 and blocks[0][2].count("\n") == 5 and len(blocks) > 6
    names = {}
    for block in blocks:
        if block[1] is None:
            line = text.count("\n", 0, block.start(2))
            exec(compile("\n" * line + block[2], str(PAGE), "exec"), names)
    said = capsys.readouterr().out
    assert said.startswith("Levels:(RGB) Gamma=130; Camera Blur:Percent Blur=5\n(270, 480, 3)\nuint8\n")
    assert "(RGB) Gamma of Levels takes whole numbers from 0 to 1000, not \"5000\"\n" in said
