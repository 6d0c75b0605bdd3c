# SPDX-License-Identifier: MIT
"""Runs the example of the engine in C: it renders a picture through a chain, or says what is wrong with one."""
import os
import shlex
import subprocess

import pytest

CHAIN = shlex.split(os.environ["VIREO_EXAMPLE_CHAIN"])

WIDTH, HEIGHT = 7, 5
PIXELS = [[bytes((30 * x, 50 * y, 255 - x)) for x in range(WIDTH)] for y in range(HEIGHT)]


def run(*words, status=0):
    completed = subprocess.run([*CHAIN, *map(str, words)], capture_output=True, timeout=120, text=True)
    assert completed.returncode == status, completed.stderr
    return completed


@pytest.fixture
def picture(tmp_path):
    (tmp_path / "in.ppm").write_bytes(b"P6\n%d %d\n255\n" % (WIDTH, HEIGHT) + b"".join(map(b"".join, PIXELS)))
    return tmp_path / "in.ppm"


def test_renders_a_chain(picture):
    result = picture.with_name("out.ppm")
    run(picture, result, "Horizontal Flip; Color Balance:red=0")
    rendered = b"".join(b"\0" + pixel[1:] for row in PIXELS for pixel in reversed(row))
    assert result.read_bytes() == b"P6\n%d %d\n255\n" % (WIDTH, HEIGHT) + rendered


def test_says_what_is_wrong(picture):
    result = picture.with_name("out.ppm")
    said = run(picture, result, "Solarize:threshold=10; Gama", status=1).stderr.splitlines()
    assert said[0].startswith('there is no filter "Gama"')
    assert said[1:] == ["Solarize:threshold=10; Gama", " " * 23 + "^"]
    missing = picture.with_name("missing.ppm")
    assert run(missing, result, "Solarize", status=1).stderr == f"cannot read {missing}\n"
    picture.write_bytes(picture.read_bytes()[:-1])
    assert run(picture, result, "Solarize", status=1).stderr == f"cut off: {picture}\n"
    assert not result.exists()
