# SPDX-License-Identifier: MIT
"""Broken clips and pictures of many formats: whatever is in a file, the render ends soon with a status and a word."""
import random
import subprocess

import numpy
import pytest
from PIL import Image

from conftest import PROGRAM, read_picture
from media_support import IDENTITY, clip, frames, packets_seconds, samples

MOVING = "testsrc2=s=96x64:r=25:d={seconds}"

CLIPS = {
    "h264.mp4": ["-c:v", "libx264", "-g", "5", "-preset", "ultrafast", "-movflags", "+faststart"],
    "h264.mkv": ["-c:v", "libx264", "-g", "5"],
    "h264.ts": ["-c:v", "libx264", "-g", "5"],
    "vp9.webm": ["-c:v", "libvpx-vp9", "-deadline", "realtime"],
    "mpeg2.mpg": ["-c:v", "mpeg2video"],
    "mpeg4.avi": ["-c:v", "mpeg4"],
    "prores.mov": ["-c:v", "prores_ks"],
    "ffv1.mkv": ["-c:v", "ffv1", "-slicecrc", "1"],
    "plain.y4m": [],
    "plain.gif": [],
}
PICTURES = {"plain.png": "rgb24", "deep.png": "rgba64be", "plain.jpg": "yuvj420p", "plain.webp": "bgra", "plain.tif": "rgb24",
            "float.exr": "gbrpf32le", "plain.qoi": "rgb24", "plain.jls": "rgb24"}


@pytest.fixture(scope="module")
def whole(tmp_path_factory):
    """Files of every format, by name."""
    folder = tmp_path_factory.mktemp("whole")
    for name, encoding in CLIPS.items():
        clip(folder, name, *encoding, source=MOVING, sound=name.endswith(("mp4", "mkv", "ts", "avi")))
    for name, pixel_format in PICTURES.items():
        clip(folder, name, "-frames:v", "1", "-pix_fmt", pixel_format, source=MOVING)
    return {name: (folder / name).read_bytes() for name in [*CLIPS, *PICTURES]}


def broken(data, how, chance):
    """The file with bits flipped all over, cut off, with a stretch overwritten, or with one missing."""
    data = bytearray(data)
    begin = chance.randrange(len(data))
    if how == "flipped":
        for _ in range(3 + len(data) // 400):
            data[chance.randrange(len(data))] ^= 1 << chance.randrange(8)
    elif how == "cut":
        del data[max(begin, 1):]
    elif how == "overwritten":
        data[begin:begin + 1500] = chance.randbytes(min(1500, len(data) - begin))
    else:
        del data[begin:begin + chance.randrange(1, 2000)]
    return bytes(data)


def place(vireo, name, data):
    """Where a file of these bytes is read from and what is made of it."""
    source = "in." + name.split(".")[1]
    (vireo.folder / source).write_bytes(data)
    return source, vireo.folder / ("out.png" if name in PICTURES else "out.mkv")


@pytest.mark.parametrize("name", [*CLIPS, *PICTURES])
def test_no_damage_stops_the_program_or_passes_unnamed_by_strict(vireo, whole, name):
    for seed, how in enumerate(("flipped", "cut", "overwritten", "missing")):
        source, output = place(vireo, name, broken(whole[name], how, random.Random(f"{name} {seed}")))
        said = []
        for strict in ([], ["--strict"]):
            result = subprocess.run([PROGRAM, "render", source, output, *IDENTITY, *strict], cwd=vireo.folder,
                                    capture_output=True, timeout=60)
            assert result.returncode in (0, 1), (how, result)
            assert {path.name for path in vireo.folder.iterdir()} == {source} | ({output.name} if result.returncode == 0 else set())
            output.unlink(missing_ok=True)
            said.append(result)
        damaged = said[0].returncode == 1 or b"warning" in said[0].stderr
        assert said[1].returncode == damaged, (how, said)


@pytest.mark.parametrize("name", ["h264.mp4", "h264.mkv", "vp9.webm", "ffv1.mkv", "mpeg4.avi", "plain.jpg", "plain.y4m",
                                  "plain.gif", "h264.ts", "float.exr", "plain.qoi", "plain.jls"])
def test_a_file_that_breaks_off_is_named(vireo, whole, name):
    source, output = place(vireo, name, whole[name][:len(whole[name]) * 6 // 10])
    result = vireo("render", source, output, *IDENTITY)
    assert b"warning: " + source.encode() in result.stderr and b"frame" in result.stderr
    if name not in PICTURES:
        assert 3 <= len(frames(vireo.folder, output.name)) < 25
    output.unlink()
    assert source in vireo("render", source, output, *IDENTITY, "--strict", status=1).stderr.decode()
    assert not output.exists()


def test_whole_files_are_named_for_nothing(vireo, whole):
    for name in whole:
        source, output = place(vireo, name, whole[name])
        assert b"warning" not in vireo("render", source, output, *IDENTITY, "--strict", "--overwrite").stderr, name


@pytest.mark.parametrize("name, encoding", [("in.gif", []), ("in.tif", ["-compression_algo", "deflate"]), ("in.jpg", []),
                                            ("in.exr", ["-compression", "zip16", "-pix_fmt", "gbrpf32le"])])
def test_broken_bits_are_named_where_the_decoder_meets_them(vireo, name, encoding):
    clip(vireo.folder, name, *encoding, *([] if name == "in.gif" else ["-frames:v", "1"]), source=MOVING)
    data = bytearray((vireo.folder / name).read_bytes())
    data[len(data) // 2:len(data) // 2 + 60] = b"\xA5" * 60
    (vireo.folder / name).write_bytes(data)
    output = "out.mkv" if name == "in.gif" else "out.png"
    assert b"damaged and rendered as far as" in vireo("render", name, output, *IDENTITY).stderr
    assert b"damaged" in vireo("render", name, "strict" + output, *IDENTITY, "--strict", status=1).stderr


def test_a_size_or_format_that_changes_within_a_clip_is_brought_to_the_first(vireo):
    with open(vireo.folder / "in.ts", "wb") as joined:
        for size, pixel_format in (("96x64", "yuv422p10le"), ("160x120", "yuv420p"), ("96x64", "yuv444p")):
            clip(vireo.folder, "part.ts", "-c:v", "libx264", "-pix_fmt", pixel_format, "-bf", "2", sound=True,
                 source=MOVING.replace("96x64", size))
            joined.write((vireo.folder / "part.ts").read_bytes())
    # Alone the flip takes 16 bits, and in a chain all is brought to 8.
    for chain in (["-f", "Horizontal Flip"], ["-f", "Horizontal Flip", "-f", "Ghosting"]):
        result = vireo("render", "in.ts", "out.mkv", *chain, "--overwrite", "--encoder", "ffv1")
        assert b"warning" not in result.stderr
        shown = frames(vireo.folder, "out.mkv", "pts_time,width,height")
        assert {(frame["width"], frame["height"]) for frame in shown} == {(96, 64)}
        # Each part's clock begins anew; the picture goes on, and the sound beside it.
        assert [round(float(frame["pts_time"]) * 25) for frame in shown] == list(range(75))
    begin, end = packets_seconds(vireo.folder, "out.mkv", "a:0")
    assert begin < 0.1 and abs(end - 3) < 0.2
    # Parts have the frames that the whole has.
    vireo("render", "in.ts", "part.mkv", *chain, "--frames", "40-59", "--encoder", "ffv1")
    whole, part = (samples(vireo.folder, name, "yuv420p").reshape(-1, 96 * 64 * 3 // 2) for name in ("out.mkv", "part.mkv"))
    assert numpy.array_equal(whole[40:60], part)


def test_pictures_of_another_size_or_depth_are_brought_to_the_first(vireo, pixels):
    for number, each in enumerate((pixels, pixels[::2, ::2], pixels[..., 0].astype(numpy.uint16) * 257, pixels[:1, :1]), 1):
        Image.fromarray(each).save(vireo.folder / f"in{number}.png")
    Image.fromarray(pixels).convert("P").save(vireo.folder / "in5.png")
    for chain in (["-f", "Horizontal Flip"], ["-f", "Ghosting"]):
        vireo("render", "in%d.png", "out%d.png", *chain, "--overwrite")
        for number in range(1, 6):
            assert read_picture(vireo.folder / f"out{number}.png").shape[:2] == (48, 64)


def test_clips_of_no_frame_and_of_one(vireo):
    clip(vireo.folder, "nothing.mkv", "-t", "0", "-c:v", "ffv1")
    clip(vireo.folder, "sound.mkv", "-vn", "-c:a", "flac", sound=True)
    (vireo.folder / "empty.mkv").touch()
    for name in ("nothing.mkv", "sound.mkv", "empty.mkv"):
        assert name in vireo.error("render", name, "out.mkv", *IDENTITY, status=1)
        assert not (vireo.folder / "out.mkv").exists()
    clip(vireo.folder, "one.mkv", "-frames:v", "1", "-c:v", "ffv1")
    for output in ("out.mp4", "out.gif", "out.png", "out%d.png"):
        vireo("render", "one.mkv", output, "-f", "Ghosting", "-f", "Vertical Hold", "-f", "Solarize:threshold=0@0s..50@2s")
        assert len(frames(vireo.folder, output)) == 1
    assert "its frames are 0 to 0" in vireo.error("render", "one.mkv", "out.mkv", *IDENTITY, "--frames", "1-2", status=1)
