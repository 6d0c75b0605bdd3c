# SPDX-License-Identifier: MIT
"""Runs the examples in Python, as a user would, over files that are made here."""
import json
import pathlib
import subprocess
import sys

import av
import numpy
import pytest
from PIL import Image

import vireo

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples/python"


def run(*words):
    completed = subprocess.run([*map(str, words)], capture_output=True, timeout=120, text=True)
    assert completed.returncode == 0, completed.stderr
    return completed


def decoded(path, kind):
    with av.open(str(path)) as container:
        return [frame.to_ndarray(**({"format": "rgb24"} if kind == "video" else {})) for frame in container.decode(**{kind: 0})]


def assert_close(ours, expected):
    """Through lossy encoders alone."""
    assert len(ours) == len(expected)
    for number, (one, other) in enumerate(zip(ours, expected)):
        assert numpy.abs(one.astype(int) - other).mean() < 9, number


@pytest.fixture(scope="module")
def clip(tmp_path_factory):
    path = tmp_path_factory.mktemp("clip") / "clip.mp4"
    run("ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc=s=192x128:rate=25:duration=2", "-f", "lavfi", "-i", "sine=d=2", "-c:v",
        "libx264", "-crf", "8", "-pix_fmt", "yuv420p", path)
    return path


def test_a_photograph(tmp_path):
    frame = numpy.random.default_rng(3).integers(0, 256, (40, 60, 4), numpy.uint8)
    Image.fromarray(frame).save(tmp_path / "in.png")
    run(sys.executable, EXAMPLES / "photograph.py", tmp_path / "in.png", tmp_path / "out.png", "Levels:(rgb) gamma=160", "Edge Feather")
    expected = vireo.Chain("Levels:(rgb) gamma=160", "Edge Feather")(frame)
    assert numpy.array_equal(numpy.asarray(Image.open(tmp_path / "out.png")), expected)


def test_a_clip_keeps_its_sound(clip, tmp_path):
    out = tmp_path / "out.mp4"
    run(sys.executable, EXAMPLES / "clip.py", clip, out, "Ghosting", "Horizontal Flip:from=1s")
    with av.open(str(clip)) as before, av.open(str(out)) as after:
        packets = [[bytes(packet) for packet in container.demux(audio=0)] for container in (before, after)]
        assert packets[0] == packets[1]
    with av.open(str(clip)) as before, av.open(str(out)) as after:
        times = [[frame.time for frame in container.decode(video=0)] for container in (before, after)]
        assert numpy.allclose(*times, atol=0.001)
    chain = vireo.Chain("Ghosting", "Horizontal Flip:from=1s")
    assert_close(decoded(out, "video"), list(chain.stream(decoded(clip, "video"), rate=25)))


def test_a_live_loop(clip, tmp_path):
    run(sys.executable, EXAMPLES / "camera.py", "--save", tmp_path / "out.avi", clip, "Ghosting", "Color Balance:red=510")
    chain = vireo.Chain("Ghosting", "Color Balance:red=510")
    assert_close(decoded(tmp_path / "out.avi", "video"), list(chain.stream(decoded(clip, "video"), rate=25)))


def test_a_notebook(tmp_path):
    run(sys.executable, "-m", "jupyter", "nbconvert", "--to", "notebook", "--execute", "--output-dir", tmp_path, EXAMPLES / "chains.ipynb")
    cells = json.loads((tmp_path / "chains.ipynb").read_text())["cells"]
    shown = [{kind for output in cell["outputs"] for kind in output.get("data", {})} for cell in cells if cell["cell_type"] == "code"]
    assert "text/html" in shown[0] and all("image/png" in kinds for kinds in shown[1:])


def test_a_type_checker_reads_them():
    package = pathlib.Path(vireo.__file__).parents[1]
    run("env", f"MYPYPATH={package}", "/usr/bin/mypy", "--strict", "--ignore-missing-imports",
        EXAMPLES / "photograph.py")
