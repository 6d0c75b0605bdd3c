# SPDX-License-Identifier: MIT
"""Interruptions, full disks, damage: what is left behind and what is said."""
import os
import pathlib
import re
import signal
import stat
import subprocess
import time

import numpy
import pytest
from PIL import Image

from conftest import PROGRAM, read_picture
from media_support import IDENTITY, clip, frames, samples


def names(folder):
    return sorted(path.name for path in folder.iterdir())


@pytest.fixture
def long_clip(tmp_path):
    return clip(tmp_path, "in.mkv", "-c:v", "libx264", "-preset", "ultrafast", seconds=20,
                source="testsrc2=s=640x480:r=25:d={seconds}")


def begun(folder, *arguments, **options):
    """A render that goes on when its output has been begun."""
    running = subprocess.Popen([PROGRAM, "render", *arguments, *IDENTITY], cwd=folder, stderr=subprocess.PIPE, **options)
    while not any(name.startswith(".vireo") for name in names(folder)):
        assert running.poll() is None
        time.sleep(0.02)
    time.sleep(0.2)
    return running


@pytest.mark.parametrize("number, status", [(signal.SIGINT, 130), (signal.SIGTERM, 143)])
@pytest.mark.parametrize("output, option", [("out.mp4", "preset=slow"), ("out%04d.png", "compression_level=9")])
def test_an_interrupted_render_leaves_nothing(tmp_path, long_clip, number, status, output, option):
    running = begun(tmp_path, long_clip, output, "--encoder-option", option)
    running.send_signal(number)
    errors = running.communicate(timeout=120)[1].decode()
    assert running.returncode == status, errors
    assert names(tmp_path) == [long_clip]
    assert len(errors.splitlines()) == 1 and errors.startswith("vireo: ")


def test_waiting_for_a_pipe_can_be_interrupted(tmp_path):
    with subprocess.Popen([PROGRAM, "render", "-", "out.mkv", *IDENTITY], cwd=tmp_path, stdin=subprocess.PIPE) as running:
        caught = 0
        while not caught >> (signal.SIGINT - 1) & 1:
            caught = int(re.search(r"SigCgt:\s*(\w+)", pathlib.Path(f"/proc/{running.pid}/status").read_text())[1], 16)
        time.sleep(0.2)
        running.send_signal(signal.SIGINT)
        assert running.wait(timeout=120) == 130
    assert names(tmp_path) == []


def test_a_reader_that_goes_away_is_told_in_a_sentence(tmp_path, long_clip):
    with subprocess.Popen([PROGRAM, "render", long_clip, "-", *IDENTITY, "--format", "y4m"], cwd=tmp_path,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE) as running:
        running.stdout.read(1000)
        running.stdout.close()
        assert b"closed the pipe" in running.stderr.read().splitlines()[-1]
    assert running.returncode == 1


def test_a_disk_that_fills_keeps_the_earlier_result(vireo, tmp_path):
    clip(tmp_path, "in.mkv", "-c:v", "ffv1", source="testsrc2=s=320x240:r=25:d={seconds}", seconds=0.4)
    precious = ["look.json", "out.bin", "out.mkv", "out3.png"]
    for name in precious:
        (tmp_path / name).write_bytes(b"precious")
    for output, limit, options in (
            (["in.mkv", "out.mkv"], 50, ["--encoder", "ffv1"]), (["in.mkv", "out%d.png"], 5, []),
            (["in.mkv", "out3.png"], 5, ["--frames", "0-0"]),
            ([], 0, ["--save-settings", "look.json"]), ([], 0, ["--save-settings-bytes", "out.bin"])):
        if limit == 0 and "thread" in os.environ.get("VIREO_SANITIZERS", ""):
            continue  # The thread sanitizer itself writes a file when a program starts.
        command = [PROGRAM, "render", *output, *IDENTITY, "--overwrite", *options]
        limited = subprocess.run(["bash", "-c", f"ulimit -f {limit}; exec \"$@\"", "limited", *command], cwd=tmp_path,
                                 capture_output=True, timeout=60)
        [error] = limited.stderr.decode().splitlines()
        assert limited.returncode == 1 and error.startswith("vireo: cannot write ") and error.endswith("."), error
        assert names(tmp_path) == ["in.mkv", *precious]
    assert {(tmp_path / name).read_bytes() for name in precious} == {b"precious"}
    with open("/dev/full", "wb") as full:
        limited = subprocess.run([PROGRAM, "render", "in.mkv", "-", *IDENTITY], cwd=tmp_path, stdout=full, stderr=subprocess.PIPE)
    assert limited.returncode == 1 and b"No space left" in limited.stderr
    assert "/dev/full: No space left on device" in vireo.error(
        "render", *IDENTITY, "--save-settings", "/dev/full", "--overwrite", status=1)


@pytest.mark.parametrize("output", ["out.mkv", "out%d.png"])
def test_a_killed_render_leaves_the_earlier_result_and_is_in_no_ones_way(tmp_path, long_clip, output):
    first = tmp_path / output.replace("%d", "1")
    first.write_bytes(b"precious")
    running = begun(tmp_path, long_clip, output, "--overwrite")
    running.kill()
    running.communicate()
    assert first.read_bytes() == b"precious"
    # The next program may have the same number and so take the same names.
    left = next(tmp_path.glob(".vireo*"))
    subprocess.run(["bash", "-c", f"mv {left.name} .vireo-$$-1.part; exec \"$@\"", "next", PROGRAM, "render", long_clip, output,
                    *IDENTITY, "--overwrite", "--frames", "0-2"], cwd=tmp_path, check=True, capture_output=True)
    assert first.read_bytes() != b"precious"
    assert len([name for name in names(tmp_path) if name.startswith(".vireo")]) == 1


def test_outputs_are_replaced_only_when_asked(vireo, tmp_path):
    clip(tmp_path, "in.mkv", "-c:v", "ffv1", seconds=0.2)
    (tmp_path / "out.mkv").write_bytes(b"precious")
    (tmp_path / "out.mkv").chmod(0o640)
    assert "out.mkv" in vireo.error("render", "in.mkv", "out.mkv", *IDENTITY, status=1)
    assert (tmp_path / "out.mkv").read_bytes() == b"precious"
    vireo("render", "in.mkv", "out.mkv", *IDENTITY, "--overwrite")
    assert len(frames(tmp_path, "out.mkv")) == 5
    assert stat.S_IMODE((tmp_path / "out.mkv").stat().st_mode) == 0o640
    # Onto itself: a whole new file.
    before = samples(tmp_path, "in.mkv", "yuv420p")
    vireo("render", "in.mkv", "in.mkv", *IDENTITY, "--overwrite", "--encoder", "ffv1")
    assert numpy.abs(samples(tmp_path, "in.mkv", "yuv420p") - before).max() <= 2
    assert names(tmp_path) == ["in.mkv", "out.mkv"]


def test_unreadable_and_unwritable_files_are_named(vireo, tmp_path):
    for name, content in (("text.mp4", "no clip at all"), ("empty.png", ""), ("no.vrmp", "no library")):
        (tmp_path / name).write_text(content)
    clip(tmp_path, "in.mkv", seconds=0.2)
    before = names(tmp_path)
    # A command's name is a file's name behind another command.
    for source in ("nowhere.mp4", "text.mp4", "empty.png", "list"):
        assert source in vireo.error("render", source, "out.mkv", *IDENTITY, status=1)
    assert "nowhere" in vireo.error("render", "in.mkv", "nowhere/out.mkv", *IDENTITY, status=1)
    assert "out.strange" in vireo.error("render", "in.mkv", "out.strange", *IDENTITY)
    assert "nowhere.json" in vireo.error("render", "in.mkv", "out.mkv", "--settings", "nowhere.json", status=1)
    assert "no.vrmp" in vireo.error("list", "--module", "no.vrmp", status=1)
    assert "missing.vrmp" in vireo.error("list", status=1, environment={"VIREO_MODULE": "missing.vrmp"})
    assert names(tmp_path) == before


def test_damaged_pictures_of_a_sequence_are_passed_over(vireo, tmp_path, pixels):
    for number in range(1, 7):
        Image.fromarray(pixels).save(tmp_path / f"in{number}.png")
    (tmp_path / "in3.png").write_bytes(b"rubbish")
    (tmp_path / "in5.png").unlink()
    result = vireo("render", "in%d.png", "out%d.png", *IDENTITY)
    assert b"frames 2, 4" in result.stderr
    assert numpy.array_equal(read_picture(tmp_path / "out6.png")[..., :3], pixels)
    assert "frame 2" in vireo.error("render", "in%d.png", "strict%d.png", *IDENTITY, "--strict", status=1)
    assert names(tmp_path) == [f"{name}{n}.png" for name, numbers in (("in", "12346"), ("out", "1246")) for n in numbers]


def test_damaged_frames_of_a_clip_are_passed_over(vireo, tmp_path):
    clip(tmp_path, "in.mov", "-c:v", "png", source="testsrc2=s=160x120:r=25:d={seconds}", seconds=0.4)
    data = bytearray((tmp_path / "in.mov").read_bytes())
    starts = [i for i in range(len(data)) if data[i:i + 8] == b"\x89PNG\r\n\x1a\n"]
    assert len(starts) == 10
    data[starts[4]:starts[4] + 60] = bytes(60)
    (tmp_path / "in.mov").write_bytes(data)
    assert b"frame 4" in vireo("render", "in.mov", "out.mkv", *IDENTITY).stderr
    kept = [round(float(f["pts_time"]) * 25) for f in frames(tmp_path, "out.mkv")]
    assert kept == [0, 1, 2, 3, 5, 6, 7, 8, 9]
    vireo("render", "in.mov", "n%d.png", *IDENTITY, "--start-number", "0")
    assert "damaged" in vireo.error("render", "in.mov", "strict.mkv", *IDENTITY, "--strict", status=1)
    assert names(tmp_path) == ["in.mov", *(f"n{n}.png" for n in kept), "out.mkv"]


def test_frames_that_are_read_in_part_are_rendered_and_named(vireo, tmp_path):
    clip(tmp_path, "in.mkv", "-c:v", "libx264", "-g", "5", "-bf", "0", source="testsrc2=s=320x240:r=25:d={seconds}", seconds=1)
    data = bytearray((tmp_path / "in.mkv").read_bytes())
    for at in range(len(data) // 2, len(data) // 2 + 1500, 7):
        data[at] ^= 0x5A
    (tmp_path / "in.mkv").write_bytes(data)
    assert b"rendered as far as" in vireo("render", "in.mkv", "out.mkv", *IDENTITY).stderr
    assert len(frames(tmp_path, "out.mkv")) >= 15
    vireo.error("render", "in.mkv", "strict.mkv", *IDENTITY, "--strict", status=1)
    assert names(tmp_path) == ["in.mkv", "out.mkv"]
