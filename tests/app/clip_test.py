# SPDX-License-Identifier: MIT
"""Time: earlier frames, key frames and fields, over a sequence of plain frames."""
import subprocess

import numpy
import pytest
from PIL import Image

from conftest import read_picture

FRAMES = 20


@pytest.fixture
def sequence(tmp_path):
    """Frames 1 to 20, each of one grey: 7 times its number from 0. Odd rows are 100 brighter."""
    for number in range(FRAMES):
        frame = numpy.full((6, 8, 3), 7 * number, numpy.uint8)
        frame[1::2] += 100
        Image.fromarray(frame).save(tmp_path / f"in{number + 1:02}.png")


def render(vireo, *arguments):
    """Rows of each frame's grey, by the frame's number from 0."""
    vireo("render", "in%02d.png", "out%02d.png", "--overwrite", *arguments)
    greys = {}
    for path in vireo.folder.glob("out*.png"):
        frame = read_picture(path)[..., :3].astype(int)
        assert (frame == frame[:, :1, :1]).all()
        greys[int(path.stem.removeprefix("out")) - 1] = list(frame[:, 0, 0])
        path.unlink()
    return greys


def source(number, row):
    return 7 * max(number, 0) + 100 * (row % 2)


def ghosted(input_at, number, step):
    """An earlier frame below, the current one over it, the oldest over both."""
    def blend(over, below, weight):
        return (over * weight + below * (255 - weight) + 127) // 255
    return blend(input_at(number - 2 * step), blend(input_at(number), input_at(number - step), 187), 68)


@pytest.mark.parametrize("scan, step", [("--progressive", 2), ("--interlaced=tff", 4), ("--interlaced=bff", 4)])
def test_ghosting_sees_earlier_frames_and_fields(vireo, sequence, scan, step):
    expected = {number: [ghosted(lambda n: source(n, row), number, step) for row in range(6)]
                for number in range(FRAMES)}
    assert render(vireo, "-f", "Ghosting", scan) == expected
    part = render(vireo, "-f", "Ghosting", scan, "--frames", "9-11", "--jobs", "3")
    assert part == {number: expected[number] for number in (9, 10, 11)}
    vireo("compare", "in%02d.png", "both%02d.png", "-f", "Ghosting", "--layout", "beside", scan)
    assert list(read_picture(vireo.folder / "both20.png")[:, -1, 0]) == expected[19]


@pytest.fixture
def clip(vireo, sequence):
    subprocess.run(["ffmpeg", "-v", "error", "-nostdin", "-r", "25", "-i", "in%02d.png", "-c:v", "ffv1", "clip.mkv"],
                   cwd=vireo.folder, check=True)


def test_clips_rendered_after_one_another_share_no_frames(vireo, sequence):
    chain = ("-f", "Solarize", "-f", "Ghosting")
    vireo("render", "in%02d.png", "up.mkv", "-f", "Solarize:mix=0", "--frames", "0-7")
    vireo("render", "in%02d.png", "down.mkv", "-f", "Vertical Flip", "--frames", "8-15")
    vireo("render", "up.mkv", "down.mkv", "--to", "together", *chain)
    for clip in ("up.mkv", "down.mkv"):
        vireo("render", clip, "alone.mkv", "--overwrite", *chain)
        assert (vireo.folder / "together" / clip).read_bytes() == (vireo.folder / "alone.mkv").read_bytes()


def test_parts_by_time_lie_beside_each_other(vireo, clip):
    for source in ("in%02d.png", "clip.mkv"):
        def part(*options, **status):
            return vireo("render", source, "part%02d.png", "-f", "Solarize", *options, **status)
        # Whichever comes first, only names that a part would take are taken.
        part("--start", "0.41s", "--duration", "0.1")
        part("--duration", "0.4")
        part("--start", "0.52")
        assert len(list(vireo.folder.glob("part*"))) == FRAMES - 1
        assert not (vireo.folder / "part11.png").exists()
        assert b"part12.png exists" in part("--start", "11f", "--duration", f"{2**63 - 1}f", status=1).stderr
        assert b"its frames are 0 to 19" in part("--start", "9" * 30, status=1).stderr
        for path in vireo.folder.glob("part*"):
            path.unlink()
    assert "its frames are 0 to 19" in vireo.error(
        "render", "in%02d.png", "part%02d.png", "-f", "Solarize", "--frames", "20-30", status=1)


def test_a_length_that_can_be_found_is_not_asked_for(vireo, clip):
    for source, given in (("in%02d.png", 3), ("clip.mkv", 3), ("-", FRAMES)):
        result = vireo("render", source, "out%02d.png", "--overwrite", "-f", "Solarize", "--frames", "15-30", "--clip-length", given,
                       input=(vireo.folder / "clip.mkv").read_bytes())
        assert b"ends with frame 19" in result.stderr, source
