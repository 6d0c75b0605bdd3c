# SPDX-License-Identifier: MIT
import os
import pathlib
import subprocess

import numpy
import pytest

PROGRAM = pathlib.Path(os.environ["VIREO_BUILD"]) / "bin/vireo"


def picture(*shape, seed=1, dtype=numpy.uint8):
    """Noise in which neighbours are alike, so that every filter has something to do."""
    rough = numpy.random.default_rng(seed).random(shape).cumsum(axis=1) % 2 - 1
    top = 1 if numpy.dtype(dtype).kind == "f" else numpy.iinfo(dtype).max
    return (numpy.abs(rough) * top).astype(dtype)


def program(*words, status=0):
    completed = subprocess.run([PROGRAM, *map(str, words)], capture_output=True, text=True, timeout=120)
    assert completed.returncode == status, completed.stderr
    return completed.stderr


@pytest.fixture(scope="session")
def clip(tmp_path_factory):
    """Forty frames with sound."""
    path = tmp_path_factory.mktemp("clip") / "clip.mkv"
    subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=96x64:rate=20:duration=2", "-f", "lavfi", "-i",
                    "sine=d=2", "-c:v", "ffv1", "-pix_fmt", "bgr0", "-c:a", "flac", path], check=True)
    return path
