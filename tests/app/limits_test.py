# SPDX-License-Identifier: MIT
"""Small inputs that ask for much, and machines that have little: a sentence and a status, in little time and memory."""
import json
import os
import resource
import struct
import subprocess
import zlib

import pytest
from PIL import Image

from conftest import PROGRAM
from media_support import IDENTITY, clip, ffmpeg, frames

SANITIZED = pytest.mark.skipif(bool(os.environ.get("VIREO_SANITIZERS")), reason="sanitizers take all addresses")


def chunk(kind, content):
    return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))


def png(width, height, *chunks, rows=None):
    """A black picture, of which only some rows may be there."""
    packer = zlib.compressobj(9)
    data = b"".join(packer.compress(bytes(1 + width)) for _ in range(height if rows is None else rows)) + packer.flush()
    head = chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0))
    return b"\x89PNG\r\n\x1a\n" + head + b"".join(chunks) + chunk(b"IDAT", data) + chunk(b"IEND", b"")


def gif(width, height):
    return (b"GIF89a" + struct.pack("<HHBBB", width, height, 0x80, 0, 0) + bytes(6) + b"," + struct.pack("<HHHHB", 0, 0, 1, 1, 0) +
            b"\2\2\x4c\1\0;")


def tiff(width, height):
    entries = [(256, width), (257, height), (258, 8), (259, 1), (262, 1), (273, 200), (277, 1), (278, height), (279, 100)]
    return (struct.pack("<2sHIH", b"II", 42, 8, len(entries)) +
            b"".join(struct.pack("<HHII", tag, 4, 1, value) for tag, value in entries) + bytes(200))


def bounded(folder, *arguments, megabytes, seconds=60):
    """With so much memory at most: the status, and what was said on both streams."""
    done = subprocess.run([PROGRAM, *map(str, arguments)], cwd=folder, capture_output=True, timeout=seconds, preexec_fn=lambda:
                          resource.setrlimit(resource.RLIMIT_AS, (megabytes << 20, megabytes << 20)))
    return done.returncode, done.stderr.decode(), done.stdout.decode()


@pytest.mark.parametrize("name, content", [("in.png", png(60000, 60000, rows=1)), ("in.gif", gif(65535, 65535)), ("in.tif", tiff(50000, 50000))])
def test_large_pictures_are_refused_by_their_size(vireo, name, content):
    (vireo.folder / name).write_bytes(content)
    error = vireo.error("render", name, "out.png", *IDENTITY, status=1)
    assert error.startswith(name) and "--max-pixels" in error and "200000000" in error


def test_the_largest_size_is_an_option(vireo, picture, pixels):
    assert "3072" not in vireo("render", picture, "out.png", *IDENTITY, "--max-pixels", "3072").stderr.decode()
    assert "64 x 48" in vireo.error("render", picture, "no.png", *IDENTITY, "--max-pixels", "3071", status=1)
    # Where a clip grows, or one of many pictures is large, the others are rendered.
    with open(vireo.folder / "in.ts", "wb") as joined:
        for size in ("96x64", "320x240"):
            joined.write((vireo.folder / clip(vireo.folder, "part.ts", "-c:v", "libx264", source=f"testsrc2=s={size}:r=25:d=1")).read_bytes())
    said = vireo("render", "in.ts", "out.mkv", *IDENTITY, "--max-pixels", "10000").stderr.decode()
    assert "frames 25-49" in said and "320 x 240" in said and "--max-pixels" in said
    assert len(frames(vireo.folder, "out.mkv")) == 25
    for number in (1, 2, 3):
        Image.fromarray(pixels).resize((64 * number, 48)).save(vireo.folder / f"s{number}.png")
    said = vireo("render", "s%d.png", "o%d.png", *IDENTITY, "--max-pixels", "6144").stderr.decode()
    assert "frame 2 " in said and "192 x 48" in said
    assert "takes whole numbers" in vireo.error("render", picture, "no.png", *IDENTITY, "--max-pixels", "0")


@pytest.fixture(scope="module")
def swelling():
    """A gigabyte of zeros, packed."""
    packer = zlib.compressobj(1)
    return b"".join(packer.compress(bytes(1 << 20)) for _ in range(1024)) + packer.flush()


@SANITIZED
@pytest.mark.parametrize("kind", [b"zTXt", b"iTXt", b"iCCP"])
def test_chunks_of_a_png_that_swell_are_left_out(vireo, swelling, kind):
    head = {b"zTXt": b"a\0\0", b"iTXt": b"a\0\1\0\0\0", b"iCCP": b"a\0\0"}[kind]
    (vireo.folder / "in.png").write_bytes(png(64, 48, chunk(kind, head + swelling)))
    assert bounded(vireo.folder, "render", "in.png", "out.png", *IDENTITY, megabytes=1000, seconds=10)[0] == 0


@SANITIZED
def test_movies_do_not_announce_what_they_cannot_hold(vireo):
    movie = (vireo.folder / clip(vireo.folder, "plain.mp4", "-c:v", "libx264")).read_bytes()
    table = bytearray(movie)
    for name, numbers in ((b"stsz", (1, 80_000_000)), (b"stts", (1, 80_000_000, 512)), (b"stsc", (1, 1, 80_000_000, 1))):
        struct.pack_into(f">{len(numbers)}I", table, table.index(name) + 8, *numbers)
    (vireo.folder / "in.mp4").write_bytes(table)
    status, said, _ = bounded(vireo.folder, "render", "in.mp4", "out.mkv", *IDENTITY, megabytes=1000)
    assert status == 1 and "announces more frames" in said
    # Thousands of tracks.
    at = movie.index(b"trak") - 4
    track = movie[at:at + struct.unpack_from(">I", movie, at)[0]]
    many = bytearray(movie[:at] + track * 3000 + movie[at + len(track):])
    head = movie.index(b"moov") - 4
    struct.pack_into(">I", many, head, struct.unpack_from(">I", movie, head)[0] + 2999 * len(track))
    (vireo.folder / "in.mp4").write_bytes(many)
    status, said, _ = bounded(vireo.folder, "render", "in.mp4", "out.mkv", *IDENTITY, megabytes=1000)
    assert status == 1 and "more than 500 streams" in said


def test_what_repeats_for_ever_is_rendered_once(vireo):
    for name, option in (("in.gif", "-loop"), ("in.apng", "-plays")):
        clip(vireo.folder, name, option, "0", seconds=0.4)
        vireo("render", name, "out.mkv", *IDENTITY, "--overwrite")
        assert len(frames(vireo.folder, "out.mkv")) == 10


def test_many_keys_and_long_gaps(vireo):
    clip(vireo.folder, "in.mkv", "-c:v", "ffv1", seconds=0.2)
    keys = "..".join(f"{frame % 255}@{frame}f" for frame in range(300_000))
    (vireo.folder / "keys.json").write_text(
        '{"vireo": 1, "filters": [{"filter": "Solarize", "parameters": {"Threshold": "%s"}}]}' % keys)
    vireo("render", "in.mkv", "out.mkv", "--settings", "keys.json")
    # Two frames that lie a month apart.
    clip(vireo.folder, "gap.mkv", "-vf", "setpts='N*2600000/TB'", "-fps_mode", "passthrough", "-frames:v", "2", "-c:v", "ffv1")
    assert "at that rate" in vireo.error("render", "gap.mkv", "no.mkv", *IDENTITY, "--fps", "60", status=1)


@SANITIZED
def test_a_pause_is_filled_frame_by_frame(vireo):
    clip(vireo.folder, "pause.mkv", "-vf", "setpts='if(eq(N,2),50,N/25)/TB'", "-fps_mode", "passthrough", "-frames:v", "3", "-c:v", "ffv1")
    status, said, _ = bounded(vireo.folder, "render", "pause.mkv", "out.mkv", *IDENTITY, "--encoder", "ffv1", "--fps", "25", "--scale", "1280:720",
                           "--frames", "1247-1250", megabytes=1200)
    assert status == 0, said
    assert len(frames(vireo.folder, "out.mkv")) == 4


@SANITIZED
def test_short_memory_is_told_in_a_sentence(vireo):
    clip(vireo.folder, "in.mp4", "-c:v", "libx264", "-c:a", "aac", sound=True, seconds=0.2, source="testsrc2=s=1280x720:r=25:d={seconds}")
    for number in (1, 2, 3):
        ffmpeg("-i", "in.mp4", "-frames:v", "1", f"p{number}.jpg", cwd=vireo.folder)
    succeeded = 0
    for megabytes in (250, 280, 300, 320, 350, 380, 420, 900):
        for command in (["in.mp4", "out.mkv"], ["p%d.jpg", "o%d.png"], ["p1.jpg", "p2.jpg", "p3.jpg", "--to", "many", "--json"]):
            status, said, report = bounded(vireo.folder, "render", *command, "-f", "Ghosting", "--jobs", "4", "--overwrite", megabytes=megabytes)
            # 127: not even the libraries could be loaded.
            assert status in (0, 1, 127), (megabytes, command, status, said)
            assert "std::" not in said and (status != 1 or said.splitlines()[-1].startswith("vireo: ")), (megabytes, command, said)
            assert status == 127 or "--json" not in command or json.loads(report)["status"] == status, (megabytes, said)
            assert not list(vireo.folder.glob("**/.vireo*"))
            succeeded += status == 0
    assert succeeded >= 3
