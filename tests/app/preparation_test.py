# SPDX-License-Identifier: MIT
"""--deinterlace, --fps, --crop and --scale: FFmpeg's own filters before the chain, whose frames are then the ones counted."""
import numpy
import pytest
from PIL import Image

from conftest import read_picture
from media_support import IDENTITY, apart, clip, ffmpeg, frames, packets_seconds, probe, samples, times

PLAIN = "testsrc2=s=160x120:r=25:d={seconds}"
LOSSLESS = ("--encoder", "ffv1")


def by_ffmpeg(folder, filters):
    ffmpeg("-i", "in.mkv", "-vf", filters, "-fps_mode", "passthrough", "-c:v", "ffv1", "-pix_fmt", "bgr0", "expected.mkv", cwd=folder)
    return samples(folder, "expected.mkv", "rgb24")


@pytest.mark.parametrize("options, filters", [
    (("--crop", "64:48:20:10"), "crop=64:48:20:10"),
    (("--scale", "80:-2"), "scale=80:60:flags=bicubic+accurate_rnd+full_chroma_int"),
    (("--fps", "10"), "fps=10"), (("--fps", "30000/1001"), "fps=30000/1001"),
    (("--scale", "48:36", "--crop", "64:48:20:10", "--fps", "5"),
     "fps=5,crop=64:48:20:10,scale=48:36:flags=bicubic+accurate_rnd+full_chroma_int")])
def test_clips_are_those_of_ffmpegs_filters(vireo, tmp_path, options, filters):
    clip(tmp_path, "in.mkv", "-c:v", "ffv1", "-pix_fmt", "bgr0", source=PLAIN, seconds=1)
    vireo("render", "in.mkv", "out.mkv", *IDENTITY, *LOSSLESS, *options)
    assert apart(samples(tmp_path, "out.mkv", "rgb24"), by_ffmpeg(tmp_path, filters)) == 0
    # Parts count the frames that come out, and join.
    count = len(times(tmp_path, "out.mkv"))
    vireo("render", "in.mkv", "part.mkv", *IDENTITY, *LOSSLESS, *options, "--frames", f"2-{count - 2}")
    size = samples(tmp_path, "out.mkv", "rgb24").size // count
    assert apart(samples(tmp_path, "part.mkv", "rgb24"), samples(tmp_path, "out.mkv", "rgb24")[2 * size:-size]) == 0


def interlaced(folder, name="in.mkv"):
    clip(folder, name, "-vf", "tinterlace=interleave_top,setfield=tff,format=bgr0", "-c:v", "ffv1", "-top", "1",
         source="testsrc2=s=160x120:r=50:d={seconds}", seconds=0.8)


def test_fields_become_whole_frames(vireo, tmp_path):
    interlaced(tmp_path)
    vireo("render", "in.mkv", "out.mkv", *IDENTITY, *LOSSLESS, "--deinterlace")
    assert {f["interlaced_frame"] for f in frames(tmp_path, "out.mkv")} == {0}
    whole = samples(tmp_path, "out.mkv", "rgb24")
    assert apart(whole, by_ffmpeg(tmp_path, "bwdif=mode=send_frame")) == 0
    vireo("render", "in.mkv", "part.mkv", *IDENTITY, *LOSSLESS, "--deinterlace", "--frames", "7-12")
    size = whole.size // 20
    assert apart(samples(tmp_path, "part.mkv", "rgb24"), whole[7 * size:13 * size]) == 0
    # Without it a crop keeps the fields apart.
    said = vireo("render", "in.mkv", "cut.mkv", *IDENTITY, *LOSSLESS, "--crop", "64:48:20:11").stderr.decode()
    assert "--crop begins at 20:10" in said and frames(tmp_path, "cut.mkv")[0]["top_field_first"] == 1
    # Colours stored for four pixels begin with them.
    clip(tmp_path, "whole.mkv", source=PLAIN, seconds=0.2)
    assert "begins at 20:10" in vireo("render", "whole.mkv", "cut.png", *IDENTITY, "--frames", "0-0", "--crop", "9:9:21:11").stderr.decode()
    assert read_picture(tmp_path / "cut.png").shape[:2] == (9, 9)
    assert "not interlaced" in vireo("render", "whole.mkv", "same.mkv", *IDENTITY, "--deinterlace").stderr.decode()


def test_times_and_lengths_are_those_of_the_result(vireo, tmp_path):
    clip(tmp_path, "in.mp4", "-c:v", "libx264", "-c:a", "aac", source=PLAIN, seconds=2, sound=True)
    # Key frames in frames and seconds: the switch lies at the same place of the result.
    for key in ("0@0f..hold..254@5f", "0@0s..hold..254@0.5s"):
        vireo("render", "in.mp4", "n%d.png", "-f", f"Solarize:threshold={key}", "--fps", "10", "--start-number", "0", "--overwrite")
        vireo("render", "in.mp4", "plain%d.png", *IDENTITY, "--fps", "10", "--start-number", "0", "--overwrite")
        changed = [n for n in range(20) if (read_picture(tmp_path / f"n{n}.png") != read_picture(tmp_path / f"plain{n}.png")).any()]
        assert changed == list(range(5, 20))
        assert not (tmp_path / "n20.png").exists()
    vireo("render", "in.mp4", "out.mp4", *IDENTITY, "--fps", "24000/1001", "--start", "0.5s", "--duration", "1s")
    assert probe(tmp_path, "out.mp4")["avg_frame_rate"] == "24000/1001" and len(times(tmp_path, "out.mp4")) == 24
    assert packets_seconds(tmp_path, "out.mp4", "a:0")[1] == pytest.approx(1, abs=0.06)
    # A pipe, whose length nobody knows; and a clip of one frame at a rate of less.
    clip(tmp_path, "in.ts", "-c:v", "libx264", source=PLAIN, seconds=2)
    with open(tmp_path / "in.ts", "rb") as pipe:
        vireo("render", "-", "piped.mkv", *IDENTITY, "--fps", "10", stdin=pipe)
    assert len(times(tmp_path, "piped.mkv")) == 20
    vireo("render", "in.mp4", "one.mkv", *IDENTITY, "--fps", "0.1")
    assert len(times(tmp_path, "one.mkv")) == 1


def test_pictures_are_prepared_upright(vireo, tmp_path, pixels):
    image = Image.fromarray(pixels)
    exif = Image.Exif()
    exif[0x0112] = 6
    image.save(tmp_path / "turned.png", exif=exif)
    upright = numpy.rot90(pixels, -1)
    vireo("render", "turned.png", "out.png", *IDENTITY, "--crop", "30:20:3:5")
    assert numpy.array_equal(read_picture(tmp_path / "out.png")[..., :3], upright[5:25, 3:33])
    for number in (1, 2, 3):
        image.save(tmp_path / f"in{number}.png")
    vireo("render", "in%d.png", "out.mp4", *IDENTITY, "--fps", "12", "--scale", "-2:24")
    found = probe(tmp_path, "out.mp4")
    assert (found["width"], found["height"], found["avg_frame_rate"], found["nb_frames"]) == (32, 24, "12/1", "3")


def test_farms_render_prepared_clips(vireo, tmp_path):
    clip(tmp_path, "in.mkv", "-c:v", "libx264", source=PLAIN, seconds=1)
    options = ("-f", "Ghosting", *LOSSLESS, "--encoder-option", "g=1", "--fps", "12", "--scale", "80:60")
    vireo("render", "in.mkv", "whole.mkv", *options)
    plan = vireo("farm", "plan", "in.mkv", "out.mkv", *options, "--segments", "3").stdout.decode()
    assert "--frames 0-3" in plan and "--frames 8-11" in plan and "--fps=12" in plan


@pytest.mark.parametrize("options, words, status", [
    (("--crop", "100:100:100:0"), ("reaches outside", "160 x 120"), 1), (("--crop", "10:10:1"), ("W:H:X:Y",), 2),
    (("--scale", "40000:30000"), ("40000 x 30000", "too large"), 1), (("--scale", "-1:-2"), ("--scale",), 2),
    (("--scale", "0:5"), ("--scale",), 2), (("--fps", "0"), ("--fps",), 2), (("--fps", "25/0"), ("--fps",), 2)])
def test_what_cannot_be_is_told_in_a_sentence(vireo, tmp_path, options, words, status):
    clip(tmp_path, "in.mkv", source=PLAIN, seconds=0.2)
    sentence = vireo.error("render", "in.mkv", "out.mkv", *IDENTITY, *options, status=status)
    assert all(word in sentence for word in words), sentence
    assert not (tmp_path / "out.mkv").exists()
