# SPDX-License-Identifier: MIT
"""Ten thousand frames through a chain of filters: memory stays where it is, and the pictures are those of the begin."""
import hashlib
import pathlib
import subprocess

import pytest

from conftest import PROGRAM
from media_support import clip, ffmpeg

LOOP, ROUNDS, LOOK_BACK = 100, 100, 4
WIDTH, HEIGHT = 64, 48
CHAIN = ["-f", "Levels:rgb gamma=150", "-f", "Ghosting", "-f", "Camera Blur:percent blur=20", "-f", "Edge Feather",
         "-f", "Solarize:threshold=100"]


def resident_kilobytes(process):
    """Memory that a running program has."""
    status = pathlib.Path(f"/proc/{process.pid}/status").read_text()
    return int(next(line.split()[1] for line in status.splitlines() if line.startswith("VmRSS")))


@pytest.mark.parametrize("jobs", [1, 2])
def test_ten_thousand_frames_take_no_more_memory_than_a_thousand(tmp_path, jobs):
    clip(tmp_path, "loop.mkv", "-c:v", "ffv1", "-g", LOOP, seconds=LOOP / 25, source=f"testsrc2=s={WIDTH}x{HEIGHT}:r=25:d={{seconds}}")
    ffmpeg("-stream_loop", ROUNDS - 1, "-i", "loop.mkv", "-c", "copy", "long.mkv", cwd=tmp_path)
    running = subprocess.Popen([PROGRAM, "render", "long.mkv", "-", "--format", "y4m", "--jobs", str(jobs), "--quiet", *CHAIN],
                               cwd=tmp_path, stdout=subprocess.PIPE)
    assert running.stdout.readline().startswith(b"YUV4MPEG2")
    pictures, memory = [], {}
    for number in range(1, LOOP * ROUNDS + 1):
        assert running.stdout.readline() == b"FRAME\n"
        pictures.append(hashlib.sha256(running.stdout.read(WIDTH * HEIGHT * 3 // 2)).digest())
        if number in (1000, LOOP * ROUNDS - 20):
            memory[number] = resident_kilobytes(running)
    assert running.stdout.read() == b"" and running.wait(timeout=120) == 0
    running.stdout.close()

    # The first frames have none to look back at.
    first = pictures[LOOK_BACK:LOOP]
    assert len(set(first)) > LOOP // 2
    for begin in range(LOOP, LOOP * ROUNDS, LOOP):
        assert pictures[begin + LOOK_BACK:begin + LOOP] == first, begin
    before, after = memory.values()
    print(f"memory after 1000 frames {before} KB, at the end {after} KB")
    assert after <= before * 1.01
