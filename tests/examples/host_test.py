# SPDX-License-Identifier: MIT
"""Runs the example of a host in C: it lists the module's filters and renders a picture."""
import os
import shlex
import subprocess

HOST = shlex.split(os.environ["VIREO_EXAMPLE_HOST"])
MODULE = os.environ["VIREO_MODULE"]

WIDTH, HEIGHT = 5, 3
PIXELS = [[bytes((20 * x, 80 * y, 255 - x)) for x in range(WIDTH)] for y in range(HEIGHT)]
BLACK, WHITE = bytes(3), bytes((255, 255, 255))
PIXELS[0][0], PIXELS[-1][-1] = BLACK, WHITE


def run(*words, status=0):
    completed = subprocess.run([*HOST, MODULE, *map(str, words)], capture_output=True, timeout=120, text=True)
    assert completed.returncode == status, completed.stderr
    return completed


def rendered(folder, filter_id):
    picture, result = folder / "in.ppm", folder / "out.ppm"
    picture.write_bytes(b"P6\n%d %d\n255\n" % (WIDTH, HEIGHT) + b"".join(b"".join(row) for row in PIXELS))
    run(filter_id, picture, result)
    header, size, depth, values = result.read_bytes().split(b"\n", 3)
    assert (header, size, depth, len(values)) == (b"P6", b"%d %d" % (WIDTH, HEIGHT), b"255", 3 * WIDTH * HEIGHT)
    pixels = [values[i:i + 3] for i in range(0, len(values), 3)]
    return [pixels[i:i + WIDTH] for i in range(0, len(pixels), WIDTH)]


def test_lists_every_filter():
    lines = run().stdout.splitlines()
    assert len(lines) == 22
    assert "10006  Black & White" in lines and "10035  Levels" in lines


def test_renders_a_picture(tmp_path):
    assert rendered(tmp_path, 10030) == [row[::-1] for row in PIXELS], "Horizontal Flip"
    solarized = rendered(tmp_path, 10049)
    assert solarized[0][0] == bytes((128, 128, 128)), "Solarize starts with a threshold of 128"
    assert solarized[-1][-1] == WHITE


def test_says_what_is_wrong(tmp_path):
    picture = tmp_path / "missing.ppm"
    assert run(10030, picture, picture, status=1).stderr == f"cannot read {picture}\n"
    assert run(1, picture, picture, status=1).stderr == "there is no filter 1\n"
