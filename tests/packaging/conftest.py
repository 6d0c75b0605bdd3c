# SPDX-License-Identifier: MIT
"""Packs and installs the build that is tested."""
import os
import pathlib
import re
import shutil
import subprocess
import zipfile

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


def packages_linked_to(*question):
    """What dpkg-query tells of the packages that the build was linked to: for another processor, not the machine's."""
    sysroot = re.search(r'CPACK_VIREO_SYSROOT "(.+)"', (BUILD / "CPackConfig.cmake").read_text())
    return run("dpkg-query", f"--admindir={sysroot[1] if sysroot else ''}/var/lib/dpkg", *question)


@pytest.fixture(scope="session")
def packages(tmp_path_factory):
    """The folder with what cpack makes of the build."""
    folder = tmp_path_factory.mktemp("cpack")
    run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", folder, "-D", "CPACK_DEBIAN_COMPRESSION_TYPE=gzip",
        "-D", "CPACK_VIREO_INSTALLER_COMPRESSOR=zlib")
    return folder


@pytest.fixture(scope="session")
def contents(packages, tmp_path_factory):
    """Each package's name and the folder that it is unpacked into."""
    roots = {}
    for package in [*packages.glob("*.deb"), *packages.glob("*.zip")]:
        root = tmp_path_factory.mktemp("contents")
        if package.suffix == ".deb":
            run("dpkg-deb", "-x", package, root)
            roots[package.name.split("_")[0]] = root
        else:
            with zipfile.ZipFile(package) as archive:
                archive.extractall(root)
            roots["vireo-filters"] = only(root, "*")
    assert roots
    return roots


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
