# SPDX-License-Identifier: MIT
"""Inputs that name other files or addresses: what is refused, in which words, and what --allow-references lets them read."""
import json
import os
import struct
import subprocess

import pytest
from PIL import Image

from conftest import PROGRAM
from media_support import IDENTITY, clip, ffmpeg, frames

ALLOWED = "--allow-references"


@pytest.fixture
def secret(tmp_path):
    """A clip beside the folder that inputs lie in, and that folder."""
    clip(tmp_path, "secret.ts", "-c:v", "libx264", "-g", "5")
    inside = tmp_path / "inputs"
    (inside / "below").mkdir(parents=True)
    clip(inside, "below/part.ts", "-c:v", "libx264", "-g", "5")
    return tmp_path / "secret.ts", inside


def playlist(*names, end="#EXT-X-ENDLIST\n"):
    return "#EXTM3U\n#EXT-X-TARGETDURATION:2\n" + "".join(f"#EXTINF:1,\n{name}\n" for name in names) + end


def file_list(*names):
    return "ffconcat version 1.0\n" + "".join(f"file '{name}'\n" for name in names)


def master(name):
    return f"#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=1000000\n{name}\n"


def data_reference(movie, path, levels):
    """The movie with its media said to lie in another file, as deep below a common folder as the levels say."""
    record = bytes(10 + 1 + 27 + 12 + 1 + 63 + 16) + struct.pack(">HH", levels, levels) + bytes(16)
    name = path.encode()
    record += struct.pack(">HH", 2, len(name)) + name + bytes(len(name) % 2) + struct.pack(">Hh", 0xFFFF, 0)
    entry = struct.pack(">I4sI", 12 + len(record), b"alis", 0) + record
    at = movie.index(b"dref") - 4
    box = struct.pack(">I4sII", 16 + len(entry), b"dref", 0, 1) + entry
    changed = bytearray(movie[:at] + box + movie[at + struct.unpack_from(">I", movie, at)[0]:])
    for parent in (b"moov", b"trak", b"mdia", b"minf", b"dinf"):
        size = movie.rindex(parent, 0, at) - 4
        struct.pack_into(">I", changed, size, struct.unpack_from(">I", movie, size)[0] + len(changed) - len(movie))
    return bytes(changed)


def test_playlists_of_any_name_read_nothing_unless_they_are_allowed_to(vireo, secret):
    for content in (playlist("below/part.ts"), file_list("below/part.ts")):
        (secret[1] / "in.mp4").write_text(content)
        error = vireo.error("render", "inputs/in.mp4", "no.mkv", *IDENTITY, status=1)
        assert error.startswith("inputs/in.mp4 is ") and ALLOWED in error
        vireo("render", "inputs/in.mp4", "out.mkv", *IDENTITY, ALLOWED, "--overwrite")
        assert len(frames(vireo.folder, "out.mkv")) == 25
        # Parts read the input again.
        vireo("render", "inputs/in.mp4", "out.mkv", *IDENTITY, ALLOWED, "--overwrite", "--frames", "10-19")
        assert len(frames(vireo.folder, "out.mkv")) == 10
        # A pipe has no folder.
        for option in ([], [ALLOWED]):
            with open(secret[1] / "in.mp4", "rb") as pipe:
                assert "standard input is " in vireo.error("render", "-", "no.mkv", *IDENTITY, *option, status=1, stdin=pipe)


def test_every_command_that_reads_refuses_and_allows(vireo, secret):
    (secret[1] / "in.mp4").write_text(playlist("below/part.ts"))
    (vireo.folder / "jobs.json").write_text(json.dumps([{"input": "inputs/in.mp4", "output": "jobs.mkv", "preset": "vhs"}]))
    for command in (["compare", "inputs/in.mp4", "beside.mkv", *IDENTITY], ["farm", "plan", "inputs/in.mp4", "o.mkv", *IDENTITY, "--segments", "2"],
                    ["export", "mlt", "inputs/in.mp4", *IDENTITY], ["probe", "inputs/in.mp4"], ["sheet", "inputs/in.mp4", "sheet%d.png"],
                    ["render", "inputs/in.mp4", "--to", "many", *IDENTITY, "--name", "{stem}.mkv"],
                    ["render", "inputs/in.mp4", "resumed.mkv", *IDENTITY, "--resume"]):
        assert ALLOWED in vireo(*command, status=1).stderr.decode(), command
        vireo(*command, ALLOWED)
    assert ALLOWED in vireo("batch", "jobs.json", status=1).stderr.decode()
    (vireo.folder / "jobs.json").write_text(
        json.dumps([{"input": "inputs/in.mp4", "output": "jobs.mkv", "preset": "vhs", "allow-references": True}]))
    vireo("batch", "jobs.json")
    # The lines of a farm have the option too.
    lines = vireo("farm", "plan", "inputs/in.mp4", "farm.mkv", *IDENTITY, "--segments", "2", ALLOWED, "--encoder", "ffv1").stdout
    subprocess.run(["sh", "-e"], input=lines, cwd=vireo.folder, check=True, capture_output=True,
                   env={**os.environ, "PATH": f"{PROGRAM.parent}:{os.environ['PATH']}"})
    assert len(frames(vireo.folder, "farm.mkv")) == 25


def test_nothing_that_an_input_names_leads_out_of_its_folder(vireo, secret):
    outside, inside = secret
    (inside / "below" / "link.ts").symlink_to(outside)
    (inside / "below" / "away").symlink_to(outside.parent)
    (inside / "nested.m3u8").write_text(playlist(outside))
    (inside / "nested.txt").write_text(file_list("below/part.ts"))
    # What is allowed comes first, so that an input that would pass over what is refused is seen.
    ways = ["../secret.ts", str(outside), f"file:{outside}", "below/link.ts", "below/missing.ts", "below/away/secret.ts", "http://127.0.0.1:9/part.ts",
            "crypto:file:" + str(outside), "subfile,,start,0,end,0,,:" + str(outside), "concat:" + str(outside), "nested.txt"]
    for way in ways:
        for content in (playlist("below/part.ts", way), file_list("below/part.ts", way), playlist(way), file_list(way), master(way)):
            (inside / "in.m3u8").write_text(content)
            result = vireo("render", "inputs/in.m3u8", "out.mkv", *IDENTITY, ALLOWED, status=1)
            assert b"inputs/in.m3u8" in result.stderr and not (vireo.folder / "out.mkv").exists(), (way, content, result)
    (inside / "in.m3u8").write_text(master("nested.m3u8"))
    assert str(outside) in vireo.error("render", "inputs/in.m3u8", "out.mkv", *IDENTITY, ALLOWED, status=1)
    (inside / "in.m3u8").write_text(playlist("below/part.ts", end=""))
    assert "no end" in vireo.error("render", "inputs/in.m3u8", "out.mkv", *IDENTITY, ALLOWED, status=1)


def test_what_cannot_be_kept_to_a_folder_is_never_read(vireo, tmp_path):
    clip(tmp_path, "in.mp4", "-c:v", "libx264", "-g", "5")
    ffmpeg("-i", "in.mp4", "-c", "copy", "-f", "dash", "manifest.mpd", cwd=tmp_path)
    (tmp_path / "manifest.mpd").rename(tmp_path / "dash.mp4")
    (tmp_path / "session.mp4").write_text(
        "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\nm=video 5004 RTP/AVP 96\na=rtpmap:96 H264/90000\n")
    for name in ("dash.mp4", "session.mp4"):
        for option in ([], [ALLOWED]):
            assert "never an input" in vireo.error("render", name, "out.mkv", *IDENTITY, *option, status=1)


def test_data_references_of_movies(vireo, secret):
    outside, inside = secret
    movie = (vireo.folder / clip(vireo.folder, "plain.mov", "-c:v", "libx264")).read_bytes()
    (outside.parent / "media.mov").write_bytes(movie)
    (inside / "media.mov").write_bytes(movie)
    for path, levels in ((str(outside.parent / "media.mov"), 0), ("/x/media.mov", 1), (str(outside.parent / "media.mov"), 2)):
        (inside / "in.mov").write_bytes(data_reference(movie, path, levels))
        error = vireo.error("render", "inputs/in.mov", "out.mkv", *IDENTITY, status=1)
        assert "media.mov" in error and ALLOWED in error
        below = levels == 1
        result = vireo("render", "inputs/in.mov", "out.mkv", *IDENTITY, ALLOWED, status=0 if below else 1)
        assert below or b"does not lie below its folder" in result.stderr
        (vireo.folder / "out.mkv").unlink(missing_ok=True)


def test_addresses_are_never_read(vireo):
    for address in ("http://127.0.0.1:9/clip.mp4", "rtmp://127.0.0.1/live", "https://127.0.0.1:9/frame%04d.png"):
        for option in ([], [ALLOWED]):
            error = vireo.error("render", address, "out.mkv", *IDENTITY, *option, status=1)
            assert error.startswith(address) and "network" in error


def test_links_in_a_sequence(vireo, tmp_path, pixels):
    (tmp_path / "shots" / "below").mkdir(parents=True)
    for name in ("outside.png", "shots/in1.png", "shots/below/kept.png"):
        Image.fromarray(pixels).save(tmp_path / name)
    (tmp_path / "shots" / "in2.png").symlink_to("in1.png")
    (tmp_path / "linked").symlink_to("shots")
    vireo("render", "linked/in%d.png", "a%d.png", *IDENTITY)
    (tmp_path / "shots" / "in3.png").symlink_to("below/kept.png")
    assert ALLOWED in vireo.error("render", "shots/in%d.png", "b%d.png", *IDENTITY, status=1)
    vireo("render", "shots/in%d.png", "b%d.png", *IDENTITY, ALLOWED)
    (tmp_path / "shots" / "in3.png").unlink()
    (tmp_path / "shots" / "in3.png").symlink_to(tmp_path / "outside.png")
    for option in ([], [ALLOWED]):
        assert "in3.png is a link" in vireo.error("render", "shots/in%d.png", "c%d.png", *IDENTITY, *option, status=1)
