# SPDX-License-Identifier: MIT
"""vireo render --dry-run and vireo probe: what would be done, as it is done then."""
import json
import subprocess

import pytest
from PIL import Image

from conftest import PROGRAM
from media_support import IDENTITY, clip, frames, probe


@pytest.fixture
def files(vireo, picture):
    clip(vireo.folder, "in.mkv", "-c:v", "libx264", "-pix_fmt", "yuv420p", "-c:a", "pcm_s16le", "-metadata:s:a", "language=eng",
         sound=True)
    (vireo.folder / "old.mp4").write_bytes(b"old")
    (vireo.folder / "old3.png").write_bytes(b"old")
    (vireo.folder / "bad.mkv").write_bytes(b"bad")
    Image.new("RGB", (16384, 4)).save(vireo.folder / "wide.png")
    return vireo


def contents(folder):
    return {path: (path.stat().st_mtime_ns, path.is_file() and path.read_bytes()) for path in folder.rglob("*")}


@pytest.mark.parametrize("arguments", [
    ["in.mkv", "out.mp4"],
    ["in.mkv", "out%03d.png", "--frames", "3-5"],
    ["in.mkv", "in.png", "--frames", "2-2", "--overwrite"],
    ["in.mkv", "in.mkv", "--overwrite"],
    ["in.mkv", "-", "--format", "y4m"],
    ["in.mkv", "in.png", "--to", "new/folder", "--frames", "0-0", "--encoder", "ffv1"],
    ["in.mkv", "bad.mkv", "--to", "new"],
    ["in.mkv", "old.mp4"],
    ["in.mkv", "old%d.png"],
    ["in.mkv", "out.png"],
    ["in.mkv", "in.mkv"],
    ["in.mkv", "in.mkv/out.mp4"],
    ["in.mkv", "no/out.mp4"],
    ["in.mkv", "no/out%d.png"],
    ["in.mkv", "no/out.png", "--frames", "1-1"],
    ["in.mkv", "in.png", "--to", "bad.mkv"],
    ["nothing.mkv", "out.mkv"],
    ["bad.mkv", "out.mkv"],
    ["wide.png", "out.png", "-f", "Vertical Flip"],
    ["in.mkv", "out.mp4", "--frames", "30-40"],
    ["in.mkv", "out.mp4", "--encoder", "nix"],
    ["in.mkv", "out.mp4", "--pixel-format", "rgb48"],
    ["in.mkv", "out.mp4", "--encoder-option", "bogus=1"],
    ["in.mkv", "out.nix"],
    ["in.mkv", "out.mp4", "--save-settings", "old.mp4"],
    ["in.mkv", "out.mp4", "-f", "Nothing"],
])
def test_a_dry_run_ends_as_the_render_begins_and_writes_nothing(files, arguments):
    command = ["render", *arguments, *IDENTITY]
    before = contents(files.folder)
    tried = run(files, *command, "--dry-run")
    told = json.loads(run(files, *command, "--dry-run", "--json").stdout)
    assert contents(files.folder) == before
    done = run(files, *command)
    errors = [line for line in done.stderr.decode().splitlines() if line.startswith("vireo: ") and line.endswith(".")]
    assert tried.returncode == told["status"] == done.returncode
    assert set(tried.stderr.decode().splitlines()) <= set(errors)
    assert bool(tried.stderr) == (done.returncode != 0)


def run(vireo, *arguments):
    """Whatever the status is."""
    return subprocess.run([PROGRAM, *arguments], cwd=vireo.folder, capture_output=True, timeout=300)


def render_of(vireo, *arguments):
    report = json.loads(vireo("render", *arguments, "--dry-run", "--json").stdout)
    return report["renders"][0], report["chain"]


def test_a_dry_run_tells_what_the_render_makes(files):
    arguments = ["in.mkv", "out.mp4", "-f", "Horizontal Hold:offset=0@0s..99@1s,mix=40%", "--frames", "5-14"]
    planned, chain = render_of(files, *arguments)
    text = files("render", *arguments, "--dry-run").stdout.decode()
    done = json.loads(files("render", *arguments, "--json").stdout)["renders"][0]
    assert {key: done[key] for key in planned} == planned
    made = probe(files.folder, "out.mp4")
    output = planned["output"]
    assert (output["width"], output["height"], output["pixelFormat"]) == (made["width"], made["height"], made["pix_fmt"])
    assert planned["input"]["framesExpected"] == len(frames(files.folder, "out.mp4")) == 10
    assert [track["fate"] for track in planned["input"]["tracks"]] == ["rendered", "converted"]
    assert [warning["code"] for warning in planned["warnings"]] == ["tracks-converted"]
    assert chain[0]["parameters"]["Offset"] == "0@0s..99@1s" and chain[0]["mix"] == "40%"
    assert len(chain[0]["parameters"]) == len(json.loads(files("info", "Horizontal Hold", "--json").stdout)["parameters"])
    for words in ("frames 5 to 14", "Offset 0@0s..99@1s", "eng, 1 channel, 48000 Hz: converted", "libx264 crf=18",
                  "note: converted"):
        assert words in text


def test_sequences_alpha_and_fields_are_told(files):
    planned, _ = render_of(files, "in.mkv", "out%03d.tif", *IDENTITY, "--frames", "3-5", "--interlaced", "bff")
    assert (planned["output"]["firstFile"], planned["output"]["lastFile"]) == ("out004.tif", "out006.tif")
    assert planned["output"]["alpha"] is True and planned["input"]["fields"] == "bottom first"
    assert render_of(files, "in.png", "out.png", *IDENTITY)[0]["output"]["alpha"] == "if needed"
    assert render_of(files, "in.png", "out.jpg", *IDENTITY)[0]["output"]["alpha"] is False
    assert render_of(files, "in.mkv", "out.mov", *IDENTITY, "--alpha")[0]["output"]["encoder"] == "prores_ks"


def test_probe_tells_the_inputs_half(files):
    planned, _ = render_of(files, "in.mkv", "out.mkv", *IDENTITY)
    for track in planned["input"]["tracks"]:
        del track["fate"]
    report = json.loads(files("probe", "in.mkv", "bad.mkv", "in.png", "--json", status=1).stdout)
    told, bad, picture = report["inputs"]
    assert report["status"] == 1 and told.pop("warnings") == [] and told == planned["input"]
    assert "bad.mkv" in bad["error"] and (picture["codec"], picture["frames"]) == ("png", 1)
    clip(files.folder, "tall.mkv", "-c:v", "ffv1", "-pix_fmt", "yuva444p10le", "-colorspace", "bt709", "-color_range", "pc",
         seconds=0.2)
    tall = json.loads(files("probe", "tall.mkv", "--frames", "1-9", "--json").stdout)["inputs"][0]
    assert (tall["bits"], tall["alpha"], tall["firstFrame"], tall["framesExpected"]) == (10, True, 1, 4)
    assert tall["tags"]["matrix"] == "bt709" and tall["colours"] == {"matrix": "bt709", "range": "full"}
    assert [warning["code"] for warning in tall["warnings"]] == ["range-shortened"]
    assert "Fields        progressive" in files("probe", "in.mkv").stdout.decode()
