# SPDX-License-Identifier: MIT
"""How outputs are written: one scale of quality, two passes, several outputs of one render, encoders of hardware."""
import json
import subprocess

import pytest

from conftest import PROGRAM
from media_support import IDENTITY, clip, probe, times

FASTER = {"libvpx-vp9": ("--encoder-option", "cpu-used=4"), "libx265": ("--encoder-option", "preset=fast")}
DETAILED = "testsrc2=s=320x240:r=25:d={seconds},noise=alls=20"


def size(folder, name):
    return (folder / name).stat().st_size


@pytest.mark.parametrize("output, encoder", [
    ("out.mp4", "libx264"), ("out.mp4", "libx265"), ("out.webm", "libvpx-vp9"), ("out.avi", "mpeg4"), ("out.mov", "prores_ks"),
    ("out.mkv", "libsvtav1"), ("out.jpg", "mjpeg"), ("out.webp", "libwebp")])
def test_quality_is_one_scale(vireo, tmp_path, output, encoder):
    clip(tmp_path, "in.mkv", "-c:v", "ffv1", source=DETAILED, seconds=0.2)
    part = ("--frames", "0-0") if output in ("out.jpg", "out.webp") else ("--frames", "0-3")
    sizes = []
    for quality in (0, 30, 60, 90, 100):
        vireo("render", "in.mkv", output, *IDENTITY, *part, "--encoder", encoder, "--quality", quality, "--overwrite")
        sizes.append(size(tmp_path, output))
    assert sizes == sorted(sizes) and sizes[0] < sizes[1] < sizes[3], sizes


def test_quality_where_there_is_no_scale(vireo, tmp_path, picture):
    said = vireo("render", picture, "out.png", *IDENTITY, "--quality", "10").stderr.decode()
    assert "the encoder png loses nothing" in said
    clip(tmp_path, "in.mkv", seconds=0.2)
    assert "crf" in vireo.error("render", "in.mkv", "out.mp4", *IDENTITY, "--quality", "10", "--encoder-option", "crf=3")
    assert "snow" in vireo.error("render", "in.mkv", "out.avi", *IDENTITY, "--quality", "10", "--encoder", "snow")
    assert "0 to 100" in vireo.error("render", "in.mkv", "out.mp4", *IDENTITY, "--quality", "101")


@pytest.mark.parametrize("output, encoder", [("out.mp4", "libx264"), ("out.mkv", "libx265"), ("out.webm", "libvpx-vp9")])
def test_two_passes_meet_the_rate(vireo, tmp_path, output, encoder):
    # Hard at the end only: a single pass cannot know.
    clip(tmp_path, "in.mkv", "-c:v", "ffv1", source="testsrc2=s=176x144:r=25:d={seconds},noise=alls=60:enable='gt(t,2)'", seconds=4)
    (tmp_path / "temporary").mkdir()
    vireo("render", "in.mkv", output, *IDENTITY, "--encoder", encoder, "--two-pass", "--encoder-option", "b=200k", *FASTER.get(encoder, ()),
          environment={"TMPDIR": str(tmp_path / "temporary")})
    assert 140_000 < size(tmp_path, output) * 8 / 4 < 300_000
    assert len(times(tmp_path, output)) == 100
    assert not list((tmp_path / "temporary").iterdir()) and not list(tmp_path.glob("*.log*")) and not list(tmp_path.glob(".vireo*"))


def test_two_passes_are_refused_where_they_cannot_be(vireo, tmp_path):
    clip(tmp_path, "in.mkv", seconds=0.2)
    assert "b=2M" in vireo.error("render", "in.mkv", "out.mp4", *IDENTITY, "--two-pass")
    assert "ffv1" in vireo.error("render", "in.mkv", "out.mkv", *IDENTITY, "--two-pass", "--encoder", "ffv1")
    assert "out.png" in vireo.error("render", "in.mkv", "out.png", *IDENTITY, "--two-pass", "--frames", "0-0")
    with open(tmp_path / "in.mkv", "rb") as pipe:
        assert "twice" in vireo.error("render", "-", "out.mp4", *IDENTITY, "--two-pass", "--encoder-option", "b=1M", stdin=pipe)


def test_several_outputs_come_of_one_render(vireo, tmp_path):
    clip(tmp_path, "in.mkv", "-c:v", "libx264", "-c:a", "aac", seconds=0.6, sound=True)
    chain = ("-f", "Ghosting", "-f", "Solarize:threshold=0@0s..200@1s")
    said = vireo("render", "in.mkv", "big.mkv", *chain, "--encoder", "ffv1", "--output", "small.mp4", "--quality", "30", "--no-audio",
                 "--output", "n%d.png", "--start-number", "5", "--output", "other.mov", "--encoder", "prores_ks").stderr.decode()
    assert "big.mkv, small.mp4, n%d.png, other.mov: 15 frames" in said
    for name, options in (("big.mkv", ("--encoder", "ffv1")), ("small.mp4", ("--quality", "30", "--no-audio"))):
        vireo("render", "in.mkv", "alone" + name, *chain, *options)
        assert (tmp_path / name).read_bytes() == (tmp_path / ("alone" + name)).read_bytes()
    assert sorted(path.name for path in tmp_path.glob("n*.png")) == sorted(f"n{n}.png" for n in range(5, 20))
    assert probe(tmp_path, "other.mov")["codec_name"] == "prores" and probe(tmp_path, "other.mov", "a:0") is not None
    assert probe(tmp_path, "small.mp4", "a:0") is None
    vireo("render", "in.mkv", *chain, "--output", "two.mp4", "--two-pass", "--encoder-option", "b=200k", "--output", "one.mp4")
    assert len(times(tmp_path, "two.mp4")) == len(times(tmp_path, "one.mp4")) == 15


def test_programs_are_told_every_output(vireo, tmp_path):
    clip(tmp_path, "in.mkv", "-c:v", "libx264", "-c:a", "aac", seconds=0.4, sound=True)
    command = ("render", "in.mkv", "a.mkv", *IDENTITY, "--encoder", "ffv1", "--output", "b%d.png", "--start-number", "7",
               "--output", "c.mp4", "--no-audio", "--two-pass", "--encoder-option", "b=200k")
    before = sorted(tmp_path.iterdir())
    planned = json.loads(vireo(*command, "--dry-run", "--json").stdout)["renders"][0]
    text = vireo(*command, "--dry-run").stdout.decode()
    assert sorted(tmp_path.iterdir()) == before
    assert all(word in text.split() for word in ("a.mkv", "ffv1", "b%d.png", "b7.png", "b16.png", "c.mp4", "libx264"))

    run = vireo(*command, "--json", "--progress", "json")
    done = json.loads(run.stdout)["renders"][0]
    assert done["outputs"] == planned["outputs"] and done["output"] == done["outputs"][0]
    assert [(o["name"], o["encoder"], o["fates"]) for o in done["outputs"]] == [
        ("a.mkv", "ffv1", ["rendered", "copied"]), ("b%d.png", "png", ["rendered", "left out"]), ("c.mp4", "libx264", ["rendered", "left out"])]
    assert (done["outputs"][1]["firstFile"], done["outputs"][1]["lastFile"]) == ("b7.png", "b16.png")
    assert done["bytes"] == sum(path.stat().st_size for path in tmp_path.iterdir() if path not in before)
    progress = [json.loads(line) for line in run.stderr.decode().splitlines() if line.startswith("{")]
    assert {told["output"] for told in progress} == {"a.mkv"}
    assert [told["phase"] for told in progress].count("done") == 1 and progress[-1]["phase"] == "done"

    # The last is taken now: told before the first pass, and by a dry run in the same words.
    for name in ("a.mkv", *(f"b{n}.png" for n in range(7, 17))):
        (tmp_path / name).unlink()
    tried, begun = (vireo(*command, *dry, status=1).stderr for dry in (("--dry-run",), ()))
    assert tried == begun and b"c.mp4 exists" in tried and not (tmp_path / "a.mkv").exists()
    failed = json.loads(vireo(*command, "--json", status=1).stdout)["renders"][0]
    assert [o["name"] for o in failed["outputs"]] == ["a.mkv", "b%d.png", "c.mp4"] and failed["output"] == {"name": "a.mkv"}
    assert "not both" in vireo.error("render", "in.mkv", "d.mkv", *IDENTITY, "--output", "-", "--progress", "json", "--progress-fd", "1")


def test_several_outputs_appear_together_or_not_at_all(vireo, tmp_path):
    clip(tmp_path, "in.mkv", "-c:v", "ffv1", source=DETAILED, seconds=2)
    before = sorted(path.name for path in tmp_path.iterdir())
    # At once: an encoder that refuses. Later: a disk that fills for one of them.
    vireo.error("render", "in.mkv", "a.mkv", *IDENTITY, "--output", "b.mp4", "--encoder", "libx264", "--encoder-option", "crf=99x", status=1)
    limited = subprocess.run(["bash", "-c", 'ulimit -f 3000; exec "$@"', "limited", PROGRAM, "render", "in.mkv", "a.mp4", *IDENTITY,
                              "--quality", "5", "--output", "b.mkv", "--encoder", "rawvideo"], cwd=tmp_path, capture_output=True, timeout=60)
    assert limited.returncode == 1 and b"b.mkv" in limited.stderr
    assert sorted(path.name for path in tmp_path.iterdir()) == before
    for arguments, word in ((("--encoder", "ffv1", "--output", "b.mkv"), "no output"), (("--output", "b.mkv", "--output", "b.mkv"), "b.mkv"),
                            (("--output", "b.mkv", "--encoder", "ffv1", "--encoder", "mpeg4"), "twice"), (("--to", "x", "--output", "b.mkv"), "--to")):
        assert word in vireo.error("render", "in.mkv", *IDENTITY, *arguments)


@pytest.mark.parametrize("encoder, words", [("h264_vaapi", "vaapi device"), ("hevc_vaapi", "vaapi device"), ("h264_nvenc", "hardware")])
def test_without_hardware_a_sentence_says_so(vireo, tmp_path, encoder, words):
    encoders = subprocess.run(["ffmpeg", "-v", "error", "-encoders"], capture_output=True, text=True, check=True).stdout
    clip(tmp_path, "in.mkv", seconds=0.2)
    works = subprocess.run(["ffmpeg", "-v", "error", "-i", "in.mkv", *(("-vaapi_device", "/dev/dri/renderD128", "-vf", "format=nv12,hwupload")
                            if "vaapi" in encoder else ()), "-c:v", encoder, "-f", "null", "-"], cwd=tmp_path, capture_output=True)
    if encoder not in encoders or works.returncode == 0:
        pytest.skip("there is no such encoder, or a device for it")
    sentence = vireo.error("render", "in.mkv", "out.mp4", *IDENTITY, "--encoder", encoder, "--quality", "60", status=1)
    assert encoder in sentence and words in sentence and not (tmp_path / "out.mp4").exists()
