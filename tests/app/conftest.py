# SPDX-License-Identifier: MIT
"""Runs the command line of a build and looks at its statuses, its words and its pictures."""
import os
import pathlib
import subprocess

import numpy
import pytest
from PIL import Image

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAM = pathlib.Path(os.environ.get("VIREO_PROGRAM", ROOT / "build/linux/bin/vireo"))


class CommandLine:
    """Runs `vireo` in a folder of its own."""

    def __init__(self, folder):
        self.folder = folder

    def __call__(self, *arguments, status=0, environment=None, **options):
        """What the program wrote. A failure must have said one sentence on standard error and nothing else on
        standard output."""
        completed = subprocess.run(
            [PROGRAM, *map(str, arguments)], cwd=self.folder, capture_output=True, timeout=300,
            env={**os.environ, **(environment or {})}, **options)
        errors = completed.stderr.decode()
        assert completed.returncode == status, f"{arguments}: status {completed.returncode}: {errors}"
        if status in (1, 2):
            assert errors.splitlines()[-1].startswith("vireo: "), errors
            assert errors.endswith(".\n"), errors
        return completed

    def error(self, *arguments, status=2, **options):
        """The one sentence that the program fails with."""
        completed = self(*arguments, status=status, **options)
        lines = completed.stderr.decode().splitlines()
        assert len(lines) == 1, lines
        assert completed.stdout == b""
        return lines[0].removeprefix("vireo: ")


@pytest.fixture
def vireo(tmp_path):
    return CommandLine(tmp_path)


@pytest.fixture(scope="session")
def pixels():
    """A small picture with every kind of place in it: gradients, edges, noise."""
    random = numpy.random.default_rng(4)
    picture = numpy.empty((48, 64, 3), numpy.uint8)
    picture[..., 0] = numpy.linspace(0, 255, 64)[None, :]
    picture[..., 1] = numpy.linspace(255, 0, 48)[:, None]
    picture[..., 2] = random.integers(0, 256, (48, 64))
    picture[10:20, 10:40] = (255, 255, 0)
    return picture


@pytest.fixture
def picture(tmp_path, pixels):
    """The file in.png with those pixels, in the folder where the program runs."""
    path = tmp_path / "in.png"
    Image.fromarray(pixels).save(path)
    return path


def read_picture(path):
    """The file's pixels: rows of red, green, blue and, where the file has it, alpha."""
    with Image.open(path) as image:
        return numpy.asarray(image)
