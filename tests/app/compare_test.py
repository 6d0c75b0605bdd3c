# SPDX-License-Identifier: MIT
"""vireo compare: before and after in one picture."""
import numpy
import pytest
from PIL import Image

from conftest import read_picture
from media_support import clip, ffmpeg, frames, packets_seconds, probe

FLIP = ("-f", "Horizontal Flip")
LINE = 4


def compare(vireo, *arguments):
    vireo("compare", *arguments, "--overwrite")


def test_both_stand_beside_one_another(vireo, picture, pixels):
    vireo("compare", "in.png", *FLIP)
    both = read_picture(vireo.folder / "in-compared.png")
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
    both, flipped = read_picture(vireo.folder / "out.png"), source[:, ::-1]
    if after is not None:
        assert (both[:height, :width] == source).all() and (both[after] == flipped).all()
    else:
        left, right = max(width // 2 - LINE // 2, 0), width // 2 + LINE // 2
        assert both.shape == source.shape
        assert (both[:, :left] == source[:, :left]).all() and (both[:, right:] == flipped[:, right:]).all()


@pytest.mark.parametrize("name, pixel_format, channel", [
    ("png", "rgba", "u1"), ("png", "rgba64le", "<u2"), ("exr", "gbrapf32le", "<f4")])
def test_transparency_shows_unless_it_is_kept_at_every_depth(vireo, name, pixel_format, channel):
    ramp = "format=gbrapf32le,geq=r='r(X,Y)':g='g(X,Y)':b='b(X,Y)':a='min(1,X/32)'"
    clip(vireo.folder, "in." + name, "-frames:v", "1", "-pix_fmt", pixel_format, source=f"testsrc2=s=64x48,{ramp}")
    one = numpy.iinfo(channel).max if channel != "<f4" else 1

    def read(file):
        """From 0 to 1, alpha last; planes become pixels."""
        values = numpy.frombuffer(ffmpeg("-i", file, "-f", "rawvideo", "-pix_fmt", pixel_format, "-", cwd=vireo.folder), channel)
        pixels = values.reshape(4, 48, -1).transpose(1, 2, 0) if name == "exr" else values.reshape(48, -1, 4)
        return pixels.astype(float) / one

    source = read("in." + name)
    compare(vireo, "in." + name, "kept." + name, *FLIP, "--alpha")
    kept = read("kept." + name)
    assert (kept[:, :64] == source).all() and (kept[:, 64 + LINE:] == source[:, ::-1]).all()
    compare(vireo, "in." + name, "shown." + name, *FLIP)
    assert probe(vireo.folder, "shown." + name)["pix_fmt"] in ("rgb24", "rgb48be", "gbrpf32le")
    y, x = numpy.indices((48, 2 * 64 + LINE)) // 4
    behind = numpy.where((x + y) % 2 == 0, 0.8, 0.6)[..., None]
    laid = behind + (kept[..., :3] - behind) * kept[..., 3:]
    shown = read("shown." + name)
    assert numpy.abs(shown[..., :3] - laid).max() < 1 / min(one, 1e6) and (shown[..., 3] == 1).all()


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
