# SPDX-License-Identifier: MIT
"""Packs and installs the build that is tested."""
import os
import pathlib
import shutil
import subprocess

import numpy
import pytest
from PIL import Image

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("VIREO_BUILD", ROOT / "build/linux"))

# Without the folders and the settings of who runs the tests.
BARE = {"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8"}


def run(*command, environment=None, **options):
    completed = subprocess.run([*map(str, command)], env=environment, capture_output=True, timeout=200, **options)
    assert completed.returncode == 0, completed.stderr.decode() + completed.stdout.decode()[-2000:]
    return completed.stdout.decode()


def packed(folder, pattern):
    """The package that cpack makes of the build."""
    run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", folder)
    (package,) = folder.glob(pattern)
    return package


@pytest.fixture(scope="session")
def packages(tmp_path_factory):
    """The folder of all packages for Windows."""
    folder = tmp_path_factory.mktemp("packages")
    packed(folder, "vireo-filters-*-windows.zip")
    return folder


def pixels(path):
    with Image.open(path) as image:
        return numpy.asarray(image.convert("RGB"))


@pytest.fixture
def picture(tmp_path):
    """A small picture that is not its own mirror."""
    pixels = numpy.arange(8 * 16 * 3, dtype=numpy.uint8).reshape(8, 16, 3)
    Image.fromarray(pixels).save(tmp_path / "in.png")
    return tmp_path / "in.png"


def only(folder, pattern):
    (found,) = folder.glob(pattern)
    return found


@pytest.fixture(scope="session")
def installation(tmp_path_factory):
    """Installed into one folder, moved into another."""
    folder = tmp_path_factory.mktemp("installation")
    run("cmake", "--install", BUILD, "--prefix", folder / "first")
    shutil.move(folder / "first", folder / "second place")
    return folder / "second place"
