# SPDX-License-Identifier: MIT
"""Files through the program."""
import os
import subprocess

import pytest

import vireo
from conftest import PROGRAM, program


def hashes(path, *words):
    return subprocess.check_output(["ffmpeg", "-v", "error", "-i", path, *words, "-f", "framemd5", "-"])


def test_a_clip_is_rendered_with_its_sound(clip, tmp_path):
    chain = vireo.Chain("Levels:(rgb) gamma=130", "Ghosting:from=1s")
    told = []
    vireo.render(clip, tmp_path / "out.mkv", chain, progress=lambda *frames: told.append(frames), arguments=["--encoder", "ffv1"])
    program("render", clip, tmp_path / "expected.mkv", "-f", chain[0], "-f", chain[1], "--encoder", "ffv1")
    assert hashes(tmp_path / "out.mkv") == hashes(tmp_path / "expected.mkv")
    assert hashes(tmp_path / "out.mkv", "-vn") == hashes(clip, "-vn")
    assert told[-1] == (40, 40) and told == sorted(told)


def test_what_cannot_be_rendered(clip, tmp_path, monkeypatch):
    out = tmp_path / "out.mkv"
    out.touch()
    with pytest.raises(vireo.Error, match=f"^{out} exists; --overwrite replaces it$"):
        vireo.render(clip, out, "Solarize")
    with pytest.raises(vireo.Error, match="^cannot open missing.mp4: No such file or directory$"):
        vireo.render("missing.mp4", out, "Solarize", overwrite=True, progress=print)
    with pytest.warns(UserWarning, match="clip.mkv ends with frame 39; what exists of the range is rendered"):
        vireo.render(clip, out, "Solarize", overwrite=True, arguments=["--frames", "30-60"])
    with pytest.raises(vireo.Error, match="a chain without filters renders no file"):
        vireo.render(clip, out, vireo.Chain())
    monkeypatch.setenv("VIREO_PROGRAM", "/nowhere/vireo")
    with pytest.raises(vireo.Error, match="cannot run /nowhere/vireo: No such file"):
        vireo.render(clip, out, "Solarize")


def test_who_stops_it_leaves_nothing(tmp_path):
    source = tmp_path / "long.nut"
    subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=640x480:duration=10", "-c:v", "mpeg4", source], check=True)

    def stop(*_):
        raise KeyboardInterrupt

    with pytest.raises(KeyboardInterrupt):
        vireo.render(source, tmp_path / "out.mkv", "Camera Blur:percent blur=9", progress=stop)
    assert os.listdir(tmp_path) == ["long.nut"]


def test_the_program_is_found(monkeypatch, tmp_path):
    monkeypatch.delenv("VIREO_PROGRAM", raising=False)
    assert vireo._program.find_program() == str(PROGRAM)
    monkeypatch.setattr(vireo._program, "_PLACES", ())
    monkeypatch.setenv("PATH", str(PROGRAM.parent))
    assert vireo._program.find_program() == str(PROGRAM)
    monkeypatch.setenv("PATH", str(tmp_path))
    with pytest.raises(vireo.Error, match="VIREO_PROGRAM says where it is"):
        vireo._program.find_program()
