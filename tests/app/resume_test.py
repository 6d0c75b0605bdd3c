# SPDX-License-Identifier: MIT
"""Renders that are killed and go on."""
import json
import signal
import subprocess
import time

import numpy
import pytest

from conftest import PROGRAM, read_picture
from media_support import clip

# Slow enough to be killed between two segments.
CHAIN = ("-f", "Ghosting", "-f", "Camera Blur:percent blur=60", "-f", "Solarize:threshold=0@0s..200@30s")
LOSSLESS = ("--encoder", "ffv1", "--encoder-option", "g=1")


def make_clip(folder):
    clip(folder, "in.mkv", "-c:v", "libx264", "-g", "25", "-c:a", "aac", sound=True, seconds=30, source="testsrc2=s=160x96:r=10:d={seconds}")


def folders(folder):
    return [path for path in folder.iterdir() if ".farm-" in path.name]


def whole(folder):
    return [path for found in folders(folder) for path in found.iterdir() if path.name.startswith("frames-")]


def kill_after_one_segment(folder, *words, with_signal=signal.SIGKILL):
    process = subprocess.Popen([PROGRAM, "render", *map(str, words)], cwd=folder, stderr=subprocess.PIPE)
    deadline = time.monotonic() + 120
    while not whole(folder):
        assert process.poll() is None and time.monotonic() < deadline, process.communicate()[1]
        time.sleep(0.005)
    process.send_signal(with_signal)
    said = process.communicate(timeout=60)[1].decode()
    assert process.returncode != 0
    return said


@pytest.mark.parametrize("with_signal", [signal.SIGKILL, signal.SIGTERM])
def test_a_render_goes_on_where_it_was_killed(vireo, tmp_path, with_signal):
    make_clip(tmp_path)
    command = ("in.mkv", "out.mkv", *CHAIN, *LOSSLESS, "--resume")
    said = kill_after_one_segment(tmp_path, *command, with_signal=with_signal)
    assert not (tmp_path / "out.mkv").exists()
    if with_signal == signal.SIGTERM:
        assert said.endswith("vireo: terminated; the same command goes on with what is done.\n")
        assert not [path for path in tmp_path.rglob("*.part")]
    before = {path: path.stat().st_mtime_ns for path in whole(tmp_path)}
    # Other options begin anew, and leave what is there.
    vireo("render", "in.mkv", "out.mkv", "-f", "Solarize", *LOSSLESS, "--resume")
    assert {path: path.stat().st_mtime_ns for path in before} == before and len(folders(tmp_path)) == 1
    (tmp_path / "out.mkv").unlink()

    completed = vireo("render", *command, "--json", "--progress", "json")
    assert f"goes on with {len(before)} of 3 segments done" in completed.stderr.decode()
    progress = [json.loads(line) for line in completed.stderr.decode().splitlines() if line.startswith("{")]
    phases = [object["phase"] for object in progress]
    assert [phases[i] for i in range(len(phases)) if i == 0 or phases[i] != phases[i - 1]] == ["open", "render", "finish", "done"]
    assert all(object["frame"] >= 100 * len(before) for object in progress if object["phase"] == "render")
    [render] = json.loads(completed.stdout)["renders"]
    assert render["frames"] == 300 and render["bytes"] == (tmp_path / "out.mkv").stat().st_size
    assert not folders(tmp_path)
    vireo("render", "in.mkv", "whole.mkv", *CHAIN, *LOSSLESS)
    assert (tmp_path / "out.mkv").read_bytes() == (tmp_path / "whole.mkv").read_bytes()
    assert "exists" in vireo.error("render", *command, status=1)
    assert "skipped" in vireo("render", *command, "--skip-existing").stderr.decode()


def test_pictures_that_are_there_are_kept(vireo, tmp_path):
    make_clip(tmp_path)
    command = ("in.mkv", "out%03d.png", *CHAIN, "--resume", "--frames", "20-290")
    kill_after_one_segment(tmp_path, *command)
    first = (tmp_path / "out021.png").stat().st_mtime_ns
    vireo("render", *command)
    assert (tmp_path / "out021.png").stat().st_mtime_ns == first and not folders(tmp_path)
    vireo("render", "in.mkv", "whole%03d.png", *CHAIN, "--frames", "20-290")
    names = sorted(path.name for path in tmp_path.glob("out*"))
    assert names == [f"out{number:03d}.png" for number in range(21, 292)]
    for name in names[::30]:
        assert numpy.array_equal(read_picture(tmp_path / name), read_picture(tmp_path / name.replace("out", "whole")))


@pytest.mark.parametrize("words, said", [
    (("in.mkv", "-"), "standard input or output"),
    (("in.mkv", "out.y4m"), "cannot be joined"),
    (("in.mkv", "in.mkv", "--overwrite"), "cannot be replaced"),
])
def test_what_cannot_go_on_is_refused(vireo, tmp_path, words, said):
    clip(tmp_path, "in.mkv", "-c:v", "ffv1")
    assert said in vireo.error("render", *words, *CHAIN, "--resume")
    assert sorted(path.name for path in tmp_path.iterdir()) == ["in.mkv"]
