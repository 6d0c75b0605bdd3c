# SPDX-License-Identifier: MIT
"""Plans of a render farm, run by a shell and by GNU parallel: the joined clip is what one render gives."""
import json
import os
import re
import subprocess

import pytest

from conftest import PROGRAM, read_picture
from media_support import VARIABLE, clip, ffmpeg, frames, packets_seconds, probe, times

CHAIN = ("-f", "Ghosting", "-f", "Solarize:threshold=0@0s..200@2s, mix=80%")
# Without key frames that count from a segment's first frame, the encoder gives a segment the bytes of the whole.
LOSSLESS = ("--encoder", "ffv1", "--encoder-option", "g=1")


class Farm:
    """Makes plans and runs their lines."""

    def __init__(self, vireo, folder):
        self.vireo, self.folder = vireo, folder
        self.environment = {**os.environ, "PATH": f"{PROGRAM.parent}:{os.environ['PATH']}", "SHELL": "/bin/sh"}

    def plan(self, *words):
        return self.vireo("farm", "plan", *words).stdout.decode().splitlines()

    def run(self, *lines, status=0, command=("sh", "-e")):
        completed = subprocess.run(command, input="\n".join(lines) + "\n", cwd=self.folder, env=self.environment,
                                   capture_output=True, text=True, timeout=120)
        assert completed.returncode == status, completed.stderr
        return completed.stderr

    def folders(self):
        return [path for path in self.folder.iterdir() if ".farm-" in path.name]


@pytest.fixture
def farm(vireo, tmp_path):
    return Farm(vireo, tmp_path)


def same(folder, first, second):
    return (folder / first).read_bytes() == (folder / second).read_bytes()


def make_clip(folder, name="in.mkv", *encoding):
    return clip(folder, name, "-c:v", "libx264", "-g", "12", "-c:a", "aac", *encoding, seconds=1.6, sound=True,
                source="testsrc2=s=96x64:r=25:d={seconds}")


@pytest.mark.parametrize("source, encoding, part, output", [
    ("in.mkv", (), (), "out.mkv"),
    ("in.mov", (), ("--start", "0.3s", "--duration", "0.9s"), "out.mov"),
    ("in.ts", (), ("--frames", "3-30"), "out.avi"),
    ("in.mkv", VARIABLE, (), "out.mov"),
    ("in.mkv", VARIABLE, ("--frames", "2-11", "--no-audio"), "out.mkv"),
    ("in.avi", ("-c:v", "mpeg4", "-bf", "2", "-c:a", "mp3"), (), "out.mkv"),
])
def test_segments_join_to_the_bytes_of_one_render(farm, vireo, tmp_path, source, encoding, part, output):
    make_clip(tmp_path, source, *encoding)
    vireo("render", source, "whole" + output, *CHAIN, *LOSSLESS, *part)
    (tmp_path / output).write_text("old")
    assert "--overwrite" in vireo.error("farm", "plan", source, output, *CHAIN, *LOSSLESS, *part, "--segments", 4, status=1)
    lines = farm.plan(source, output, *CHAIN, *LOSSLESS, *part, "--segments", 4, "--overwrite")
    assert len(lines) == 6 and lines[4].startswith("#")
    farm.run(*lines)
    assert same(tmp_path, output, "whole" + output)
    assert not farm.folders()


def test_lossy_segments_join_in_time(farm, vireo, tmp_path):
    make_clip(tmp_path)
    for output, extra in (("out.mp4", ("--encoder-option", "bf=3", "--encoder-option", "movflags=faststart")),
                          ("out.webm", ("--encoder", "libvpx", "--encoder-option", "cpu-used=8"))):
        vireo("render", "in.mkv", "whole" + output, *CHAIN, *extra)
        plan = ("in.mkv", output, *CHAIN, *extra, "--segments", 3)
        farm.run(*farm.plan(*plan, "--part", "segments"), command=("parallel", "--will-cite", "--jobs", "2"))
        farm.run(*farm.plan(*plan, "--part", "join"))
        ours, whole = ([times(tmp_path, name), packets_seconds(tmp_path, name, "v:0"), packets_seconds(tmp_path, name, "a:0"),
                        probe(tmp_path, name)["pix_fmt"]] for name in (output, "whole" + output))
        assert ours == whole


def test_fields_are_those_of_the_clips_first_frame(farm, vireo, tmp_path):
    # Progressive up to the middle, interlaced from there on.
    make_clip(tmp_path, "a.ts", "-c:v", "mpeg2video")
    make_clip(tmp_path, "b.ts", "-c:v", "mpeg2video", "-flags", "+ildct", "-top", "1")
    (tmp_path / "list").write_text("file a.ts\nfile b.ts\n")
    ffmpeg("-f", "concat", "-i", "list", "-c", "copy", "in.mkv", cwd=tmp_path)
    assert {frame["interlaced_frame"] for frame in frames(tmp_path, "in.mkv")} == {0, 1}
    vireo("render", "in.mkv", "whole.mkv", *CHAIN, "--encoder-option", "qp=0")
    farm.run(*farm.plan("in.mkv", "out.mkv", *CHAIN, "--encoder-option", "qp=0", "--segments", 3))
    ours, whole = ((ffmpeg("-i", name, "-map", "0:v", "-f", "md5", "-", cwd=tmp_path), probe(tmp_path, name).get("field_order"))
                   for name in ("out.mkv", "whole.mkv"))
    assert ours == whole


def test_pictures_keep_their_numbers(farm, vireo, tmp_path):
    make_clip(tmp_path)
    part = (*CHAIN, "--frames", "5-20")
    vireo("render", "in.mkv", "whole%02d.png", *part)
    lines = farm.plan("in.mkv", "out%02d.png", *part, "--segments", 3)
    farm.run(*lines[:2])
    assert "frames 16 to 20" in farm.run(lines[-1], status=1)
    before = (tmp_path / "out06.png").stat().st_mtime_ns
    # Also a plan that is made again goes on where the first one was.
    farm.run(*lines, *farm.plan("in.mkv", "out%02d.png", *part, "--segments", 3))
    assert not farm.folders() and (tmp_path / "out06.png").stat().st_mtime_ns == before
    ours, whole = ({path.name[-6:]: read_picture(path).tobytes() for path in tmp_path.glob(f"{name}*")} for name in ("out", "whole"))
    assert ours == whole and set(ours) == {f"{number:02d}.png" for number in range(6, 22)}

    vireo("render", "out%02d.png", "whole.mkv", "-f", "Ghosting", *LOSSLESS)
    farm.run(*farm.plan("out%02d.png", "out.mkv", "-f", "Ghosting", *LOSSLESS, "--segments", 3))
    assert same(tmp_path, "out.mkv", "whole.mkv")


def test_any_name_and_value_survives_the_shell(farm, vireo, tmp_path):
    folder = tmp_path / "a 'b' \"c\" $HOME `d` \\ é ~ * (x);&|"
    folder.mkdir()
    make_clip(folder, "./-in.mkv")
    farm.folder = vireo.folder = folder
    vireo("render", "-f", "Solarize", "--save-settings", "look 'n' $feel.json")
    lines = farm.plan("--settings", "look 'n' $feel.json", *LOSSLESS, "--segments", 2, "--language", "fr", "--",
                      "-in.mkv", "-out 'é' $x.mkv")
    farm.run(*lines)
    vireo("render", "-f", "Solarize", *LOSSLESS, "--", "-in.mkv", "whole.mkv")
    assert same(folder, "-out 'é' $x.mkv", "whole.mkv")
    vireo.error("farm", "plan", "./-in.mkv", "two\nlines.mkv", "-f", "Solarize", "--segments", 2)


def test_only_what_is_missing_is_done(farm, vireo, tmp_path):
    make_clip(tmp_path)
    plan = ("in.mkv", "out.mkv", *CHAIN, *LOSSLESS, "--segments", 3)
    segments, join = farm.plan(*plan, "--part", "segments"), farm.plan(*plan, "--part", "join")
    farm.run(segments[0], segments[2])
    assert "frames 14 to 26" in farm.run(*join, status=1) and not (tmp_path / "out.mkv").exists()

    [folder] = farm.folders()
    times_before = {path: path.stat().st_mtime_ns for path in folder.iterdir()}
    kept = farm.plan(*plan, "--part", "join", "--keep")
    farm.run(*segments, *kept)
    assert {path: path.stat().st_mtime_ns for path in times_before} == times_before
    assert len(list(folder.iterdir())) == 3

    # A segment that is not whole is told from one whose source is damaged.
    (tmp_path / "out.mkv").unlink()
    whole = sorted(folder.iterdir())[1]
    ffmpeg("-i", whole, "-c", "copy", "-frames:v", "5", tmp_path / "short.mkv", cwd=tmp_path)
    (tmp_path / "short.mkv").rename(whole)
    assert "5 frames and not the 13" in farm.run(*join, status=1)
    # What a worker that was killed has left goes with the rest.
    whole.rename(folder / ".vireo-99999-1.part")
    for _ in range(2):
        farm.run(*segments, *join)
        assert not farm.folders()

    # What was rendered with other settings or from another input is never joined.
    other = farm.plan("in.mkv", "other.mkv", "-f", "Solarize", *LOSSLESS, "--segments", 2)
    again = farm.plan("in.mkv", "other.mkv", "-f", "Solarize:threshold=9", *LOSSLESS, "--segments", 2)
    farm.run(other[0])
    os.utime(tmp_path / "in.mkv", (1, 1))
    assert "has the input changed" in farm.run(other[-1], status=1)
    assert "are missing" in farm.run(again[-1], status=1)


def test_damaged_frames_are_left_out_as_in_one_render(farm, vireo, tmp_path):
    clip(tmp_path, "n%02d.png", seconds=0.8)
    (tmp_path / "n07.png").unlink()
    (tmp_path / "n12.png").write_bytes(b"no picture")
    vireo("render", "n%02d.png", "whole.mkv", *CHAIN, *LOSSLESS)
    said = farm.run(*farm.plan("n%02d.png", "out.mkv", *CHAIN, *LOSSLESS, "--segments", 4))
    assert "left out: 1 of frames 5 to 9" in said and "left out: 1 of frames 10 to 14" in said
    assert same(tmp_path, "out.mkv", "whole.mkv")


@pytest.mark.parametrize("words, said", [
    (("-", "out.mkv", "-f", "Solarize"), "standard input"),
    (("in.mkv", "in.mkv", "-f", "Solarize", "--overwrite"), "own input"),
    (("in.mkv", "out.mkv"), "no filter"),
    (("in.mkv", "out.mkv", "-f", "Solarize", "--save-settings", "look.json"), "saves no settings"),
    (("in.mkv", "out.y4m", "-f", "Solarize"), "cannot be joined"),
])
def test_what_cannot_be_farmed_is_refused(vireo, tmp_path, words, said):
    make_clip(tmp_path)
    assert said in vireo.error("farm", "plan", *words, "--segments", 2)


def run_open_job(template, folder, environment):
    """What a worker of Open Job Description does: each step's script, once for each value of its parameter."""
    parameters = {f"Param.{p['name']}": p["default"] for p in template["parameterDefinitions"]}
    for step in template["steps"]:
        [file] = step["script"]["embeddedFiles"]
        action = step["script"]["actions"]["onRun"]
        definitions = step.get("parameterSpace", {}).get("taskParameterDefinitions", [])
        for value in definitions[0]["range"] if definitions else [None]:
            words = {**parameters, f"Task.File.{file['name']}": str(folder / "run"),
                     **{f"Task.Param.{d['name']}": value for d in definitions}}

            def filled(text):
                return re.sub(r"\{\{ *([\w.]+) *\}\}", lambda match: words[match[1]], text)

            (folder / "run").write_text(filled(file["data"]))
            subprocess.run([action["command"], *map(filled, action["args"])], check=True, env=environment, cwd="/")


def test_an_open_job_renders_the_clip(farm, vireo, tmp_path):
    folder = tmp_path / "it's"
    folder.mkdir()
    farm.folder = vireo.folder = folder
    make_clip(folder)
    plan = ("in.mkv", "out.mkv", *CHAIN, *LOSSLESS, "--segments", 3)
    template = json.loads(vireo("farm", "plan", *plan, "--format", "openjd").stdout)
    assert template["specificationVersion"] == "jobtemplate-2023-09"
    assert template["steps"][1]["dependencies"] == [{"dependsOn": template["steps"][0]["name"]}]
    run_open_job(template, tmp_path, farm.environment)
    vireo("render", "in.mkv", "whole.mkv", *CHAIN, *LOSSLESS)
    assert same(folder, "out.mkv", "whole.mkv")
    assert "{{" in vireo.error("farm", "plan", "in.mkv", "{{x.mkv", *CHAIN, "--segments", 2, "--format", "openjd")


@pytest.mark.parametrize("output", ["out 'x'.mkv", "out%03d.png"])
def test_snakemake_renders_what_is_missing(farm, vireo, tmp_path, output):
    make_clip(tmp_path)
    plan = ("in.mkv", output, *CHAIN, *(LOSSLESS if "mkv" in output else ()), "--segments", 3)
    vireo("render", *plan[:1], "whole" + output, *plan[2:-2])
    (tmp_path / "Snakefile").write_bytes(vireo("farm", "plan", *plan, "--format", "snakemake").stdout)
    farm.run(farm.plan(*plan)[0])
    done = [segment["done"] for segment in json.loads(vireo("farm", "status", *plan, "--json").stdout)["segments"]]
    assert done == [True, False, False]
    assert b"1 of 3 segments are there\n" in vireo("farm", "status", *plan).stdout

    assert "braces" in vireo.error("farm", "plan", "in.mkv", "{1}.mkv", *CHAIN, "--segments", 2, "--format", "snakemake")
    snakemake = ["snakemake", "--cores", "2", "--quiet", "--rerun-triggers", "mtime"]
    said = subprocess.run(snakemake, cwd=tmp_path, env=farm.environment, check=True, capture_output=True, text=True)
    joined = "mkv" in output
    assert len(farm.folders()) == (0 if joined else 1)
    for whole in tmp_path.glob("whole*"):
        assert same(tmp_path, whole.name.removeprefix("whole"), whole.name), said.stderr
    there = "3 of 3 segments are there" + (" and joined" if joined else "") + "\n"
    assert there in vireo("farm", "status", *plan).stdout.decode()
    before = [path.stat().st_mtime_ns for path in sorted(tmp_path.glob("out*"))]
    subprocess.run(snakemake, cwd=tmp_path, env=farm.environment, check=True, capture_output=True)
    assert [path.stat().st_mtime_ns for path in sorted(tmp_path.glob("out*"))] == before


def test_a_plan_for_programs_names_what_hangs_on_what(farm, vireo, tmp_path):
    make_clip(tmp_path)
    plan = ("in.mkv", "out.mkv", *CHAIN, "--segments", 3)
    told = json.loads(vireo("farm", "plan", *plan, "--json").stdout)
    lines = farm.plan(*plan)
    assert [segment["command"] for segment in told["segments"]] == lines[:3] and told["join"]["command"] == lines[-1]
    assert [segment["frames"] for segment in told["segments"]] == [[0, 13], [14, 26], [27, 39]]
    assert told["join"]["dependencies"] == [segment["name"] for segment in told["segments"]]
    assert all(told["folder"] in segment["outputs"][0] for segment in told["segments"])
    assert told["segments"][0]["inputs"] == ["in.mkv"] and told["join"]["outputs"] == ["out.mkv"]
    assert "--part" in vireo.error("farm", "plan", *plan, "--json", "--part", "join")
