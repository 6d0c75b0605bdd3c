# SPDX-License-Identifier: MIT
"""Runs the examples in C: they list the module's filters, render pictures and say what is wrong."""
import os
import shlex
import subprocess

import pytest

CHAIN = shlex.split(os.environ["VIREO_EXAMPLE_CHAIN"])
HOST = [*shlex.split(os.environ["VIREO_EXAMPLE_HOST"]), os.environ["VIREO_MODULE"]]
WIDTH, HEIGHT = 7, 5
PIXELS = [[bytes((30 * x, 50 * y, 255 - x)) for x in range(WIDTH)] for y in range(HEIGHT)]
PIXELS[0][0], PIXELS[-1][-1] = bytes(3), bytes((255, 255, 255))


def ppm(rows):
    return b"P6\n%d %d\n255\n" % (WIDTH, HEIGHT) + b"".join(map(b"".join, rows))


def run(*words, status=0):
    completed = subprocess.run([*map(str, words)], capture_output=True, timeout=120, text=True)
    assert completed.returncode == status, completed.stderr
    return completed


@pytest.fixture
def picture(tmp_path):
    (tmp_path / "in.ppm").write_bytes(ppm(PIXELS))
    return tmp_path / "in.ppm"


@pytest.fixture
def result(tmp_path):
    return tmp_path / "out.ppm"


def test_the_chain_renders(picture, result):
    run(*CHAIN, picture, result, "Horizontal Flip; Color Balance:red=0")
    assert result.read_bytes() == ppm([[b"\0" + pixel[1:] for pixel in reversed(row)] for row in PIXELS])


def test_the_host_lists_and_renders(picture, result):
    lines = run(*HOST).stdout.splitlines()
    assert len(lines) == 22 and {"10006  Black & White", "10035  Levels"} < set(lines)
    run(*HOST, 10030, picture, result)
    assert result.read_bytes() == ppm([row[::-1] for row in PIXELS]), "Horizontal Flip"
    run(*HOST, 10049, picture, result)
    values = result.read_bytes()[-3 * WIDTH * HEIGHT:]
    assert values[:3] == bytes((128, 128, 128)), "Solarize starts with a threshold of 128"
    assert values[-3:] == PIXELS[-1][-1]


def test_what_is_wrong_is_said(picture, result):
    chain = "Solarize:threshold=10; Gama"
    said = run(*CHAIN, picture, result, chain, status=1).stderr.splitlines()
    assert said[0].startswith('there is no filter "Gama"') and said[1:] == [chain, " " * 23 + "^"]
    missing = picture.with_name("missing.ppm")
    for command in ([*CHAIN, missing, result, "Solarize"], [*HOST, 10030, missing, result]):
        assert run(*command, status=1).stderr == f"cannot read {missing}\n"
    assert run(*HOST, 1, picture, result, status=1).stderr == "there is no filter 1\n"
    picture.write_bytes(picture.read_bytes()[:-1])
    assert run(*CHAIN, picture, result, "Solarize", status=1).stderr == f"cut off: {picture}\n"
    assert not result.exists()
