#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Follows docs/adding-a-filter.md in a copy of the tree, to the letter: builds and runs the new filter's tests and
renders with it.

adding_a_filter.py VIREO
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
IGNORED = shutil.ignore_patterns("build", ".git", "demo-output", "node_modules", "__pycache__", "*.jpg", "*.png")

STEP = re.compile(r"^(New file|At the end of|In) `([^`]+)`(?:, (behind|in place of) the line `([^`]+)`)?:\n\n"
                  r"```\w+\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def follow(page, tree):
    """Applies every step of the page, of which there has to be one for each block that is no command."""
    text = page.read_text(encoding="utf-8")
    steps = STEP.findall(text)
    assert len(steps) == len(re.findall(r"^```(?!sh)\w", text, re.MULTILINE)), "a block without a place"
    for how, name, where, line, block in steps:
        file = tree / name
        assert file.exists() == (how != "New file"), name
        old = file.read_text(encoding="utf-8") if file.exists() else ""
        if how == "In":
            assert old.count(line + "\n") == 1, f"{name} has no line {line}, or more than one"
            kept = line + "\n" if where == "behind" else ""
            file.write_text(old.replace(line + "\n", kept + block), encoding="utf-8")
        else:
            file.write_text(old + block, encoding="utf-8")


def run(tree, *command, **environment):
    completed = subprocess.run([str(word) for word in command], cwd=tree, check=False, text=True,
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT, env={**os.environ, **environment})
    assert completed.returncode == 0, completed.stdout[-4000:]
    return completed.stdout


def build(tree, target):
    cache = {"CCACHE_BASEDIR": str(tree), "CCACHE_NOHASHDIR": "1"}
    launcher = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []
    run(tree, "cmake", "--preset", "linux", *launcher, **cache)
    run(tree, "cmake", "--build", "--preset", "linux", "--target", target, **cache)


def picture(levels):
    """A row of pixels as PPM."""
    return b"P6\n%d 1\n255\n" % len(levels) + bytes(level for level in levels for _ in range(3))


def main():
    vireo = pathlib.Path(sys.argv[1]).resolve()
    with tempfile.TemporaryDirectory() as folder:
        tree = pathlib.Path(folder).resolve() / "tree"
        shutil.copytree(ROOT, tree, ignore=IGNORED)
        follow(ROOT / "docs/adding-a-filter.md", tree)
        build(tree, "filter_tests")
        print(run(tree, "build/linux/bin/filter_tests", "--gtest_filter=Posterize.*"))
        (tree / "photo.ppm").write_bytes(picture(range(0, 256, 5)))
        module = tree / "build/linux/bin/VireoFiltersMetaPlugin.vrmp"
        assert "2 to 32" in run(tree, vireo, "info", "Posterize", VIREO_MODULE=str(module))
        run(tree, vireo, "render", "photo.ppm", "posterized.ppm", "-f", "Posterize:levels=3", VIREO_MODULE=str(module))
        result = (tree / "posterized.ppm").read_bytes()
        expected = picture([(0, 127, 255)[level * 3 // 256] for level in range(0, 256, 5)])
        assert result == expected, result


if __name__ == "__main__":
    main()
