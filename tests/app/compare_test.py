# SPDX-License-Identifier: MIT
"""vireo compare: before and after in one picture."""
import numpy
import pytest
from PIL import Image

from conftest import read_picture
from media_support import clip, frames, packets_seconds, probe

FLIP = ("-f", "Horizontal Flip")
LINE = 4


def compare(vireo, *arguments):
    vireo("compare", *arguments, "--overwrite")


def test_both_stand_beside_one_another(vireo, picture, pixels):
    vireo("compare", "in.png", *FLIP)
    both = read_picture(vireo.folder / "in-compared.png")
    assert both.shape == (48, 2 * 64 + LINE, 3)
    assert (both[:, :64] == pixels).all() and (both[:, 64 + LINE:] == pixels[:, ::-1]).all()
    line = both[:, 64:64 + LINE, 0]
    assert line.min() < 50 and line.max() > 200
    assert "in-compared.png exists" in vireo.error("compare", "in.png", *FLIP, status=1)
    assert "standard input" in vireo.error("compare", "-", *FLIP)


@pytest.mark.parametrize("size, layout, after", [
    ((64, 32), "auto", (slice(32 + LINE, None), slice(None))),       # wide frames stand above one another
    ((63, 32), "auto", (slice(None), slice(63 + LINE, None))),
    ((40, 31), "below", (slice(32 + LINE, None), slice(None))),      # rows keep their field
    ((64, 32), "beside", (slice(None), slice(64 + LINE, None))),
    ((64, 48), "split", None),
    ((1, 1), "auto", (slice(None), slice(1 + LINE, None))),
    ((1, 1), "split", None),
])
def test_layouts(vireo, pixels, size, layout, after):
    width, height = size
    source = pixels[:height, :width]
    Image.fromarray(source).save(vireo.folder / "in.png")
    compare(vireo, "in.png", "out.png", *FLIP, "--layout", layout)
    both = read_picture(vireo.folder / "out.png")
    flipped = source[:, ::-1]
    if after is not None:
        assert (both[:height, :width] == source).all() and (both[after] == flipped).all()
    else:
        assert both.shape == source.shape
        left, right = width // 2 - LINE // 2, width // 2 + LINE // 2
        assert (both[:, :max(left, 0)] == source[:, :max(left, 0)]).all()
        assert (both[:, right:] == flipped[:, right:]).all()


def test_transparency_shows_unless_it_is_kept(vireo, pixels):
    clear = numpy.dstack([pixels, numpy.full(pixels.shape[:2], 255, numpy.uint8)])
    clear[:, 32:, 3] = 0
    Image.fromarray(clear).save(vireo.folder / "in.png")
    compare(vireo, "in.png", "out.png", *FLIP)
    both = read_picture(vireo.folder / "out.png")
    assert both.shape[2] == 3 and set(both[:, 32:64].flatten()) == {153, 204}
    assert (both[:, :32] == pixels[:, :32]).all()
    compare(vireo, "in.png", "out.png", *FLIP, "--alpha")
    kept = read_picture(vireo.folder / "out.png")
    assert (kept[:, :64, 3] == clear[..., 3]).all() and (kept[:, 68:, 3] == clear[:, ::-1, 3]).all()


def test_clips_keep_their_sound_and_times(vireo):
    clip(vireo.folder, "in.mp4", "-c:v", "libx264", "-pix_fmt", "yuv420p", "-c:a", "aac", sound=True)
    compare(vireo, "in.mp4", "out.mp4", *FLIP, "--start", "0.2", "--duration", "0.4",
            "--encoder-option", "crf=10")
    video = probe(vireo.folder, "out.mp4")
    assert (video["width"], video["height"]) == (2 * 160 + LINE, 120)
    assert len(frames(vireo.folder, "out.mp4")) == 10
    begin, end = packets_seconds(vireo.folder, "out.mp4", "a:0")
    assert end - begin == pytest.approx(0.4, abs=0.05)


def test_alpha_of_video_goes_where_it_is_shown(vireo):
    clip(vireo.folder, "in.mov", "-c:v", "qtrle", "-pix_fmt", "argb", seconds=0.2)
    for arguments, format in (([], "yuv420p"), (["--alpha"], "yuva444p")):
        compare(vireo, "in.mov", "out.mov", *FLIP, *arguments)
        assert probe(vireo.folder, "out.mov")["pix_fmt"].startswith(format), arguments


def test_untagged_colours_are_tagged_where_the_height_would_change_them(vireo):
    clip(vireo.folder, "in.mkv", "-c:v", "libx264", "-pix_fmt", "yuv420p", "-vf", "scale=160:300", seconds=0.2)
    compare(vireo, "in.mkv", "out.mkv", *FLIP, "--layout", "below")
    video = probe(vireo.folder, "out.mkv")
    assert video["height"] == 604 and video["color_space"] == "smpte170m"
