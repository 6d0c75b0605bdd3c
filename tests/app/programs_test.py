# SPDX-License-Identifier: MIT
"""What other programs read: progress, results, codes, logs."""
import json
import os
import re
import signal
import subprocess
import time

import pytest

from conftest import PROGRAM, ROOT
from media_support import IDENTITY, clip

SLOW = ("-f", "Camera Blur:percent blur=100") * 4


def results(vireo, *arguments, status=0):
    report = json.loads(vireo("render", *arguments, "--json", status=status).stdout)
    assert report["status"] == status
    return report


def objects(text):
    return [json.loads(line) for line in text.decode().splitlines() if line.startswith("{")]


def test_a_render_tells_what_it_made(vireo, picture):
    clip(vireo.folder, "in.mkv", "-c:v", "ffv1", "-c:a", "pcm_s16le", sound=True)
    (vireo.folder / "bad.mkv").write_text("no clip")
    report = results(vireo, "in.mkv", "bad.mkv", "in.png", "--to", "made", "-f", "Solarize:threshold=9", status=1)
    assert report["chain"][0]["parameters"] == {"Threshold": 9} and report["dryRun"] is False
    clip_made, bad, picture_made = report["renders"]
    assert bad["status"] == 1 and "bad.mkv" in bad["error"] and bad["input"] == {"name": "bad.mkv"}
    for made, frames in ((clip_made, 25), (picture_made, 1)):
        assert (made["status"], made["frames"], made["lost"], made["impaired"]) == (0, frames, [], [])
        assert made["bytes"] == (vireo.folder / made["output"]["name"]).stat().st_size
        assert 0 < made["seconds"] < 60
    assert (clip_made["output"]["width"], clip_made["output"]["encoder"]) == (160, "libx264")
    assert [track["fate"] for track in clip_made["input"]["tracks"]] == ["rendered", "copied"]
    assert "not both" in json.loads(vireo("render", "in.mkv", "-", *IDENTITY, "--json", status=2).stdout)["error"]


def cut(name):
    return lambda folder: (folder / name).write_bytes((folder / name).read_bytes()[:(folder / name).stat().st_size * 6 // 10])


def remove(name):
    return lambda folder: (folder / name).unlink()


@pytest.mark.parametrize("code, source, encoding, spoil, output, arguments", [
    ("range-shortened", "in.mkv", [], None, "out.mkv", ["--frames", "20-30"]),
    ("tracks-converted", "in.mkv", ["-c:a", "pcm_s16le"], None, "out.mp4", []),
    ("tracks-left-out", "in.mkv", [], None, "out.y4m", []),
    ("depth-reduced", "in.mkv", ["-c:v", "ffv1", "-pix_fmt", "yuv422p10le"], None, "out.mkv", []),
    ("hdr-as-it-is", "in.mkv", ["-color_trc", "smpte2084"], None, "out.mkv", []),
    ("alpha-dropped", "in.mkv", [], None, "out.mp4", ["-f", "Edge Feather"]),
    ("file-breaks-off", "in.mkv", ["-c:v", "mjpeg"], cut("in.mkv"), "out.mkv", []),
    ("frames-lost", "in%d.png", [], remove("in3.png"), "out.mkv", []),
    ("frames-impaired", "in%d.jpg", [], cut("in3.jpg"), "out.mkv", []),
])
def test_each_warning_has_its_code(vireo, code, source, encoding, spoil, output, arguments):
    clip(vireo.folder, source, *encoding, sound="%" not in source)
    if spoil:
        spoil(vireo.folder)
    report = results(vireo, source, output, *IDENTITY, *arguments, "--log", "log.txt")["renders"][0]
    warning = next(w for w in report["warnings"] if w["code"] == code)
    assert f"{warning['sentence']}. [{code}]\n" in (vireo.folder / "log.txt").read_text()
    for kind in ("lost", "impaired"):
        assert report[kind] == ([[2, 2]] if code == f"frames-{kind}" else []), report


def test_codes_are_documented():
    codes = re.findall(r'return "([a-z-]+)";', (ROOT / "app/base/message_code.h").read_text())
    page = (ROOT / "docs/command-line.md").read_text().split("| Code |")[1].split("\n\n")[0]
    table = re.findall(r"^\| `([a-z-]+)` \|", page, re.MULTILINE)
    assert len(codes) > 5 and table == codes


def test_progress_is_an_object_a_line(vireo):
    clip(vireo.folder, "in.mkv", "-c:v", "ffv1", seconds=2)
    lines = vireo("render", "in.mkv", "out.mkv", *SLOW, "--jobs", "1", "--progress", "json", "--quiet").stderr
    told = objects(lines)
    assert len(told) == len(lines.splitlines())
    assert [t["phase"] for t in told if t["phase"] != "render"] == ["open", "finish", "done"]
    assert all(set(t) == {"phase", "frame", "of", "framesPerSecond", "secondsLeft", "output"} for t in told)
    frames = [t["frame"] for t in told]
    assert frames == sorted(frames) and frames[-1] == told[-1]["of"] == 50 and told[-1]["secondsLeft"] == 0
    assert {t["output"] for t in told} == {"out.mkv"}
    failed = vireo("render", "nothing.mkv", "out2.mkv", *IDENTITY, "--progress", "json", status=1).stderr
    assert [t["phase"] for t in objects(failed)] == ["open", "failed"]


def test_progress_goes_to_a_descriptor(vireo, picture):
    ours, theirs = os.pipe()
    said = vireo("render", "in.png", "out.png", *IDENTITY, "--progress-fd", theirs, pass_fds=[theirs]).stderr
    os.close(theirs)
    with open(ours, "rb") as file:
        assert [t["phase"] for t in objects(file.read())] == ["open", "render", "finish", "done"]
    assert said.startswith(b"vireo: out.png: 1 frame in") and b"{" not in said
    assert "no descriptor" in vireo.error("render", "in.png", "out2.png", *IDENTITY, "--progress-fd", "99")
    assert "not both" in vireo.error("render", "in.png", "-", *IDENTITY, "--progress-fd", "1")
    # Nobody listens any more.
    ours, theirs = os.pipe()
    os.close(ours)
    vireo("render", "in.png", "out3.png", *IDENTITY, "--progress-fd", theirs, pass_fds=[theirs])
    os.close(theirs)


@pytest.mark.parametrize("style, expected", [
    ([], r"frame ([1-9]\d*) of 250, \d+ %, [\d.]+ fps, \d+:\d\d left\n"),
    (["--progress", "json"], r'\{"phase":"render","frame":([1-9]\d*),"of":250,.*\}\n'),
])
def test_a_signal_asks_for_progress(vireo, style, expected):
    data = (vireo.folder / clip(vireo.folder, "in.mkv", "-c:v", "ffv1", seconds=10)).read_bytes()
    command = [PROGRAM, "render", "-", "out.mkv", "--clip-length", "250", *IDENTITY, "--quiet", *style]
    with subprocess.Popen(command, cwd=vireo.folder, stdin=subprocess.PIPE, stderr=subprocess.PIPE) as render:
        # The render waits for the rest of its input.
        render.stdin.write(data[:len(data) // 2])
        render.stdin.flush()
        end, line = time.monotonic() + 60, ""
        while not re.fullmatch(expected, line):
            assert time.monotonic() < end, line
            time.sleep(0.2)
            render.send_signal(signal.SIGUSR1)
            line = render.stderr.readline().decode()
        _, rest = render.communicate(data[len(data) // 2:], timeout=60)
        assert render.returncode == 0 and (style or rest == b"")


def test_a_log_keeps_what_was_said(vireo, picture):
    arguments = ["render", "in.png", "out put.png", "-f", "Solarize:threshold=50%", "--quiet", "--log", "log.txt"]
    assert vireo(*arguments).stderr == b""
    vireo(*arguments, status=1)
    lines = (vireo.folder / "log.txt").read_text().splitlines()
    assert all(re.match(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z ", line) for line in lines)
    words = [line.split(" ", 1)[1] for line in lines]
    version = vireo("--version").stdout.decode().splitlines()
    assert words[:3] == version and words[3].startswith("FFmpeg ") and "libavcodec" in words[3]
    assert json.loads(words[4].removeprefix("command ")) == arguments and words[5] == f"folder {vireo.folder}"
    assert re.fullmatch(r"vireo: out put.png: 1 frame in [\d.]+ s\.", words[6]) and words[7] == "status 0"
    assert words[-2:] == ["vireo: out put.png exists; --overwrite replaces it.", "status 1"]
    assert "cannot write the log" in vireo.error("list", "--log", "no/log.txt", status=1)
