# SPDX-License-Identifier: MIT
"""The wheel, made offline and installed where nothing else of ours is."""
import os
import pathlib
import subprocess
import sys

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[3]
BUILD = pathlib.Path(os.environ["VIREO_BUILD"])

USE = """
import numpy, sys, vireo
from importlib.metadata import version
assert vireo.__file__.startswith(sys.prefix), vireo.__file__
assert vireo.__version__ == version("vireo")
frame = numpy.arange(60, dtype=numpy.uint8).reshape(4, 5, 3)
assert (vireo.Chain("Horizontal Flip")(frame) == frame[:, ::-1]).all()
assert str(vireo.Chain(preset="sepia"))
assert vireo.filters()._repr_html_().count("<img") == 22
vireo.render(*sys.argv[1:], "Ghosting")
loaded = {line.split()[-1] for line in open("/proc/self/maps") if "ireo" in line}
assert all(file.startswith(sys.prefix) for file in loaded), loaded
"""


def run(*words):
    completed = subprocess.run([*map(str, words)], capture_output=True, text=True, timeout=120, cwd="/",
                               env={"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8"})
    assert completed.returncode == 0, completed.stdout + completed.stderr


@pytest.fixture(scope="module")
def python(tmp_path_factory):
    folder = tmp_path_factory.mktemp("wheel")
    run("cmake", "-D", f"BUILD={BUILD}", "-D", f"PYTHON={sys.executable}", "-D", f"OUTPUT={folder}/made", "-P",
        ROOT / "bridges/python/make_wheel.cmake")
    (wheel,) = (folder / "made").iterdir()
    assert wheel.name.endswith(f"-cp3{sys.version_info.minor}-cp3{sys.version_info.minor}-linux_x86_64.whl")
    run(sys.executable, "-m", "venv", "--system-site-packages", "--without-pip", folder / "venv")
    run(folder / "venv/bin/python", "-m", "pip", "install", "--no-index", "--no-deps", wheel)
    return folder / "venv/bin/python"


def test_it_runs_with_nothing_else_installed(python, clip, tmp_path):
    run(python, "-c", USE, clip, tmp_path / "out.mkv")
    assert (tmp_path / "out.mkv").stat().st_size > 1000
