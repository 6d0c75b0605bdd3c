# SPDX-License-Identifier: MIT
"""What a decoder that was taken over could still do, and that everything else goes on as without the sandbox."""
import json
import os
import re
import shutil
import subprocess
import time

import pytest

from conftest import PROGRAM
from media_support import IDENTITY, clip, frames

PROBE = PROGRAM.with_name("sandbox_probe.so")
FAR = ("-f", "Solarize:threshold=50%")
REFUSED = {"EACCES", "EPERM", "EXDEV"}


@pytest.fixture
def confined(vireo):
    if not vireo("--version").stdout.endswith(b"\nsandbox on\n"):
        pytest.skip("no sandbox here")
    clip(vireo.folder, "in.mkv", "-c:v", "ffv1")
    return vireo


def attempts(vireo, *arguments, status=0, **environment):
    """What became of each attempt, on the main thread and on another one."""
    for name in ("secret", "other"):
        (vireo.folder / name).write_text("mine")
    errors = vireo(*arguments, status=status, environment={"LD_PRELOAD": str(PROBE), "ATTEMPTS": "1", **environment}).stderr.decode()
    found = re.findall(r"^attempt (.*): (\w+)$", errors, re.MULTILINE)
    assert len(found) == 2 * len(dict(found)) == 76
    return found


@pytest.mark.parametrize("command, landlock", [
    (("render", "in.mkv", "out.mkv", *IDENTITY), "7"), (("render", "in.mkv", "out.mkv", *IDENTITY, "--overwrite"), "2"),
    (("compare", "in.mkv", "both.mkv", *FAR), "4"), (("sheet", "in.mkv", "sheet.mkv"), "5"), (("probe", "in.mkv"), "1"),
    (("farm", "plan", "in.mkv", "far.mkv", "--segments", "2", *FAR), "3")])
def test_a_decoder_reads_its_input_and_nothing_else(confined, command, landlock):
    writes, replaces = command[0] not in ("probe", "farm"), "--overwrite" in command
    for attempt, result in attempts(confined, *command, LANDLOCK=landlock):
        expected = REFUSED
        if attempt == "readTheInput":
            expected = {"done"}
        elif attempt == "readByOpenat2":
            expected = {"ENOSYS"}
        elif attempt in ("takeByARename", "replaceAnother") and not writes:
            expected = {"ENOENT"}
        elif attempt in ("replaceAnother", "renameAnother", "removeAnother") and replaces:
            # What may replace its output may take away any file beside it.
            expected = {"done", "ENOENT"}
        assert result in expected, (attempt, result)
    assert (confined.folder / "secret").read_text() == "mine"
    # A file that appears beside the output begins empty and stays so.
    assert (confined.folder / "new").exists() == writes
    assert not writes or (confined.folder / "new").stat().st_size == 0
    assert replaces or (confined.folder / "other").read_text() == "mine"
    assert not list(confined.folder.glob(".vireo*"))


def test_without_the_sandbox_the_same_attempts_succeed(confined):
    found = dict(attempts(confined, "--no-sandbox", "probe", "in.mkv", status=1)[:38])
    for attempt in ("readAnother", "readByALink", "list", "writeTheInput", "makeAFile", "renameAnother", "changeRights",
                    "cutTheInput", "runAProgram", "fork1", "network", "signalAnother", "limitAnother"):
        assert found[attempt] == "done", attempt
    assert confined("--version", "--no-sandbox").stdout.endswith(b"\nsandbox off\n")


def test_all_threads_are_confined(confined):
    with subprocess.Popen([PROGRAM, "render", "-", "out.mkv", *FAR], cwd=confined.folder, stdin=subprocess.PIPE) as render:
        data = (confined.folder / "in.mkv").read_bytes()
        render.stdin.write(data[:len(data) // 2])
        render.stdin.flush()
        tasks, states = f"/proc/{render.pid}/task", []
        deadline = time.monotonic() + 60
        while len(states) < 3:
            assert time.monotonic() < deadline
            time.sleep(0.05)
            states = [open(f"{tasks}/{task}/status").read() for task in os.listdir(tasks)]
        assert all("Seccomp:\t2" in state and "NoNewPrivs:\t1" in state for state in states)
        assert open(f"{tasks}/{render.pid}/children").read() == ""
        render.kill()


@pytest.mark.parametrize("environment, strength", [
    ({"LANDLOCK": "0", "NO_SECCOMP": "1"}, "not available"), ({"LANDLOCK": "1"}, "on in part"), ({"LANDLOCK": "0"}, "on in part"),
    ({"LANDLOCK": "2", "NO_SECCOMP": "1"}, "on in part"), ({"LANDLOCK": "3"}, "on")])
def test_systems_with_less_work_all_the_same(confined, environment, strength):
    environment["LD_PRELOAD"] = str(PROBE)
    assert confined("--version", environment=environment).stdout.decode().endswith(f"\nsandbox {strength}\n")
    for name in ("out.mp4", "frame%d.png", "frame1.png"):
        confined("render", "in.mkv" if name != "frame1.png" else "frame%d.png", name, "--overwrite", *FAR,
                 *(("--frames", "0-0") if name == "frame1.png" else ()), environment=environment)
    assert not list(confined.folder.glob(".vireo*"))


def test_places_are_found_however_they_are_named(confined, picture):
    folder = confined.folder
    (folder / "down").mkdir()
    (folder / "way").symlink_to("down")
    (folder / "alias.png").symlink_to("in.png")
    shutil.copy(picture, folder / "down" / "old.png")
    (folder / "to.png").symlink_to("down/old.png")
    confined("render", "way/../in.png", "way/a.png", *FAR)
    confined("render", "alias.png", folder / "down" / "b.png", *FAR)
    confined("render", "in.png", "to.png", "--overwrite", *FAR)
    a = (folder / "down/a.png").read_bytes()
    assert (folder / "to.png").is_symlink()
    assert a == (folder / "down/b.png").read_bytes() == (folder / "down/old.png").read_bytes()
    confined("render", "down", "--recursive", "--to", "new/deep", *FAR)
    assert len(os.listdir(folder / "new/deep")) == 3


def test_jobs_read_what_earlier_ones_wrote_and_encoders_their_files(confined, picture):
    folder = confined.folder
    (folder / "jobs.json").write_text(json.dumps([
        {"input": "in.png", "output": "a.png", "filter": ["Solarize"]},
        {"input": "a.png", "output": "b.png", "filter": ["Solarize"]},
        {"input": "in.mkv", "output": "f%d.png", "filter": ["Solarize"]},
        {"input": "f%d.png", "output": "c.mp4", "filter": ["Solarize"]}]))
    confined("batch", "jobs.json")
    confined("batch", "jobs.json", "--overwrite")
    (folder / "zones").write_text("0 I 20\n5 P 20\n")
    confined("render", "in.mkv", "d.mkv", *FAR, "--encoder", "libx264", "--encoder-option", "x264-params=qpfile=zones")
    confined("render", "in.mkv", "e.mp4", *FAR, "--two-pass", "--encoder-option", "b=200k", environment={"TMPDIR": str(folder)})
    assert not list(folder.glob("vireo-*")) + list(folder.glob(".vireo-*"))


def test_pipes_and_descriptors_stay_what_they_are(confined):
    folder = confined.folder
    data = (folder / "in.mkv").read_bytes()
    os.mkfifo(folder / "pipe.mkv")
    with subprocess.Popen(["cat", "pipe.mkv"], cwd=folder, stdout=subprocess.PIPE) as reader:
        confined("render", "in.mkv", "pipe.mkv", *FAR)
        assert len(reader.stdout.read()) > 1000
    with subprocess.Popen(["cp", "in.mkv", "pipe.mkv"], cwd=folder):
        confined("render", "pipe.mkv", "a.mkv", *FAR)
    assert confined("render", "-", "-", *FAR, input=data).stdout[:4] == data[:4]
    with open(folder / "in.mkv", "rb") as file:
        confined("render", f"/dev/fd/{file.fileno()}", "b.mkv", *FAR, pass_fds=[file.fileno()])
        confined("render", "/dev/stdin", "c.mkv", *FAR, stdin=file)
    confined("render", "/dev/stdin", "d.mkv", *FAR, input=data)
    assert {len(frames(folder, name)) for name in ("a.mkv", "b.mkv", "c.mkv", "d.mkv")} == {25}
