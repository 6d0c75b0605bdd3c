# SPDX-License-Identifier: MIT
"""Chains handed on to FFmpeg, MLT and GStreamer give the pixels that `vireo render` gives."""
import contextlib
import os
import subprocess

import pytest
from conftest import PROGRAM
from media_support import clip, ffmpeg, samples

PLUGINS = PROGRAM.parent.parent / "frei0r-1"
ELEMENTS = PROGRAM.parent.parent / "gstreamer-1.0"
LOSSLESS = ("-c:v", "ffv1", "-pix_fmt", "bgra")

CONSTANT = ("-f", "Color Replace:target color=#ff0000, similarity=60", "-f", "Vertical Hold")
KEYS = ("-f", "Solarize:threshold=0@0s..254@1s..hold..20@1.2s,from=5f,to=1.4s",
        "-f", "Color Replace:target color=#ff0000@0s..#0000ff@1s,similarity=60")
SMOOTH = ("-f", "Levels:(rgb) gamma=60@0f..smooth..180@30f", "-f", "Horizontal Hold", "-f", "Ghosting:to=1s")
MIXED = ("-f", "Solarize:threshold=100,mix=0@0s..100@1s", "-f", "Vertical Flip:mix=31%", "-f", "Bend:from=10f")

@pytest.fixture
def plugins(monkeypatch, tmp_path):
    if not PLUGINS.is_dir() or os.environ.get("VIREO_SANITIZERS"):
        pytest.skip("other programs cannot load these plug-ins")
    monkeypatch.setenv("FREI0R_PATH", str(PLUGINS))
    monkeypatch.setenv("MLT_FREI0R_PLUGIN_PATH", str(PLUGINS))
    monkeypatch.setenv("GST_PLUGIN_PATH", str(ELEMENTS))
    monkeypatch.setenv("GST_REGISTRY", str(tmp_path / "registry"))
    monkeypatch.setenv("GST_REGISTRY_FORK", "no")


def source(folder, *encoding):
    return clip(folder, "in.mkv", *encoding, *LOSSLESS, seconds=1.6, source="testsrc2=s=160x120:r=25:d={seconds}")


def rendered(vireo, *chain):
    vireo("render", "in.mkv", "vireo.mkv", *chain, "--encoder", "ffv1", "--pixel-format", "bgra")
    return samples(vireo.folder, "vireo.mkv", "bgra")


def exported(vireo, *arguments):
    return vireo("export", *arguments).stdout.decode().strip()


@pytest.mark.usefixtures("plugins")
@pytest.mark.parametrize("chain", [CONSTANT, KEYS, SMOOTH, MIXED, ("--preset", "vhs")])
def test_ffmpeg_renders_the_same(vireo, tmp_path, chain):
    source(tmp_path)
    graph = exported(vireo, "ffmpeg", "in.mkv", *chain, "--commands", "it's, keys.cmd")
    ffmpeg("-i", "in.mkv", "-vf", graph, *LOSSLESS, "out.mkv", cwd=tmp_path)
    assert (samples(tmp_path, "out.mkv", "bgra") == rendered(vireo, *chain)).all()


@pytest.mark.usefixtures("plugins")
def test_ffmpeg_follows_a_varying_rate_and_a_late_begin(vireo, tmp_path):
    source(tmp_path, "-vf", r"setpts=N*N*20+5000", "-fps_mode", "passthrough")
    graph = exported(vireo, "ffmpeg", "in.mkv", *KEYS, "--commands", "keys.cmd")
    ffmpeg("-i", "in.mkv", "-fps_mode", "passthrough", "-vf", graph, *LOSSLESS, "out.mkv", cwd=tmp_path)
    assert (samples(tmp_path, "out.mkv", "bgra") == rendered(vireo, *KEYS)).all()


@pytest.mark.usefixtures("plugins")
@pytest.mark.parametrize("chain", [CONSTANT, KEYS, SMOOTH])
def test_melt_renders_the_same(vireo, tmp_path, chain):
    source(tmp_path)
    (tmp_path / "look.mlt").write_text(exported(vireo, "mlt", "in.mkv", *chain))
    result = tmp_path / "out.mkv"
    command = ["melt", "-silent", "look.mlt", "-consumer", "avformat:out.mkv", "vcodec=ffv1", "pix_fmt=bgra",
               "mlt_image_format=rgba", "an=1", "real_time=-1"]
    # On a busy machine melt may end before its consumer has begun, and leaves an empty file, or miss its end.
    for _ in range(5):
        with contextlib.suppress(subprocess.TimeoutExpired):
            subprocess.run(command, cwd=tmp_path, check=True, capture_output=True, timeout=60)
            if result.exists() and result.stat().st_size:
                break
    assert (samples(tmp_path, "out.mkv", "bgra") == rendered(vireo, *chain)).all()


@pytest.mark.usefixtures("plugins")
@pytest.mark.parametrize("chain", [CONSTANT, KEYS, SMOOTH, MIXED, (*CONSTANT, "--frei0r"), ("--preset", "vhs")])
def test_gstreamer_renders_the_same(vireo, tmp_path, chain):
    if "--frei0r" not in chain and not ELEMENTS.is_dir():
        pytest.skip("built without the elements")
    source(tmp_path)
    elements = exported(vireo, "gstreamer", "in.mkv", *chain)
    ffmpeg("-i", "in.mkv", "-f", "rawvideo", "in.raw", cwd=tmp_path)
    pipeline = ("filesrc location=in.raw ! rawvideoparse format=bgra width=160 height=120 framerate=25/1 ! %s"
                " ! video/x-raw,format=BGRA ! filesink location=out.raw")
    expected = rendered(vireo, *(word for word in chain if word != "--frei0r")).astype("u1").tobytes()
    # In a shell's line, and as words that a shell has put in its place.
    for start in ("gst-launch-1.0 -q " + pipeline % elements, f"E='{elements}'; gst-launch-1.0 -q " + pipeline % "$E"):
        subprocess.run(start, shell=True, cwd=tmp_path, check=True)
        assert (tmp_path / "out.raw").read_bytes() == expected


def test_what_cannot_be_handed_on_is_told(vireo, tmp_path):
    assert "--commands FILE" in vireo.error("export", "ffmpeg", *KEYS, "--frame-rate", "25")
    assert "--frame-rate" in vireo.error("export", "ffmpeg", *KEYS)
    assert "takes a rate" in vireo.error("export", "ffmpeg", *KEYS, "--frame-rate", "25/0")
    assert "one value" in vireo.error("export", "gstreamer", "--frei0r", *KEYS, "--frame-rate", "25")
    source(tmp_path)
    assert "mix" in vireo.error("export", "mlt", "in.mkv", *MIXED)
    assert "begins with its stretch" in vireo.error("export", "mlt", "in.mkv", "-f", "Bend:from=1s")
    (tmp_path / "keys.cmd").touch()
    assert "--overwrite" in vireo.error("export", "ffmpeg", "in.mkv", *KEYS, "--commands", "keys.cmd", status=1)
