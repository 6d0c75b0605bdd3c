# SPDX-License-Identifier: MIT
"""vireo preview, with players of its own under ffplay's name."""
import os

import pytest

from conftest import read_picture
from media_support import clip, ffmpeg, probe


@pytest.fixture
def player(vireo):
    """Puts a script in ffplay's place and returns the environment that finds it."""
    def install(script):
        path = vireo.folder / "bin/ffplay"
        path.parent.mkdir(exist_ok=True)
        path.write_text(f"#!/bin/sh\n{script}\n")
        path.chmod(0o755)
        return {"PATH": f"{path.parent}:/usr/bin:/bin"}
    return install


def test_shows_pictures_and_clips(vireo, picture, pixels, player):
    environment = player('printf "%s\\n" "$@" > arguments; exec cat > shown.nut')
    vireo("preview", "in.png", "-f", "Horizontal Flip", environment=environment)
    ffmpeg("-i", "shown.nut", "shown.png", cwd=vireo.folder)
    assert (read_picture(vireo.folder / "shown.png")[..., :3] == pixels[:, ::-1]).all()
    arguments = (vireo.folder / "arguments").read_text().splitlines()
    assert arguments[-4:] == ["-f", "nut", "-i", "pipe:0"] and "vireo: in.png" in arguments

    clip(vireo.folder, "in.mp4", "-c:v", "libx264", "-pix_fmt", "yuv420p", "-c:a", "aac", sound=True)
    vireo("preview", "in.mp4", "-f", "Solarize", "--layout", "beside", environment=environment)
    assert (probe(vireo.folder, "shown.nut")["width"], probe(vireo.folder, "shown.nut", "a:0")["codec_name"]) == (324, "aac")


def test_ends_quietly_with_its_window(vireo, player):
    clip(vireo.folder, "in.mkv", "-c:v", "ffv1", seconds=10)
    completed = vireo("preview", "in.mkv", "-f", "Solarize", environment=player("head -c 100000 > /dev/null"))
    assert completed.stdout == completed.stderr == b""


def test_says_what_fails(vireo, picture, player):
    preview = "preview", "in.png", "-f", "Solarize"
    assert "ffplay failed" in vireo.error(*preview, status=1, environment=player("cat > /dev/null; exit 1"))
    environment = player("exec cat > /dev/null")
    assert "missing.png" in vireo.error("preview", "missing.png", "-f", "Solarize", status=1, environment=environment)
    os.remove(vireo.folder / "bin/ffplay")
    environment["PATH"] = str(vireo.folder / "bin")
    assert "ffplay, which cannot be started" in vireo.error(*preview, status=1, environment=environment)
