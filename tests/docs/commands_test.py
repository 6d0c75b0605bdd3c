# SPDX-License-Identifier: MIT
"""Runs every block of commands of the pages, in the order in which a reader meets them, in what looks like a clone of
the tree. Builds and installations are taken as done; the demo's clip and photographs are small ones."""
import os
import pathlib
import re
import subprocess

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ["VIREO_PROGRAM"]).parents[1]
PAGES = ["README.md", "docs/guide.md", "docs/engine.md", "docs/gstreamer.md", "docs/hosting.md"]

BLOCK = re.compile(r"(?:<!-- not run: ([^>]+) -->\n\n?)?```sh\n(.*?)^```$", re.MULTILINE | re.DOTALL)
ALREADY_DONE = ("cmake", "sudo")
PHOTOS = ("citrus-fruits", "european-honey-bee")


@pytest.fixture(scope="module")
def samples(tmp_path_factory):
    folder = tmp_path_factory.mktemp("demo")
    (folder / "photos").mkdir()
    for number, name in enumerate(PHOTOS):
        ffmpeg("-f", "lavfi", "-i", f"testsrc2=s=192x128:duration=1:rate=1,hue=h={40 * number}", "-frames:v", "1",
               folder / f"photos/{name}.jpg")
    ffmpeg("-f", "lavfi", "-i", "testsrc2=s=128x96:rate=25:duration=10", "-f", "lavfi", "-i", "sine=d=10", "-pix_fmt",
           "yuv420p", "-c:v", "libx264", "-preset", "ultrafast", "-shortest", folder / "clip.mp4")
    return folder


def ffmpeg(*words):
    subprocess.run(["ffmpeg", "-v", "error", "-y", *map(str, words)], check=True)


@pytest.fixture(scope="module")
def clone(tmp_path_factory, samples):
    folder = tmp_path_factory.mktemp("clone")
    for entry in ROOT.iterdir():
        if entry.name not in ("build", "demo", "check", "demo-output", ".git"):
            (folder / entry.name).symlink_to(entry)
    (folder / "build").mkdir()
    (folder / "build/linux").symlink_to(BUILD)
    (folder / "build/demo").symlink_to(samples)
    (folder / "done").mkdir()
    for stub in [*(folder / "done" / name for name in ALREADY_DONE), folder / "demo", folder / "check"]:
        stub.write_text("#!/bin/sh\n")
        stub.chmod(0o755)
    return folder


@pytest.mark.parametrize("page", PAGES)
def test_commands_work(page, clone):
    if page == "docs/gstreamer.md" and not (BUILD / "gstreamer-1.0").is_dir():
        pytest.skip("built without the elements")
    text = (ROOT / page).read_text(encoding="utf-8")
    script = "".join(f"echo '{page}, line {text.count(chr(10), 0, block.start(2)) + 1}'\n{block[2]}"
                     for block in BLOCK.finditer(text) if block[1] is None)
    assert script, "a page without commands"
    environment = {**os.environ, "HOME": str(clone), "PATH": f"{clone / 'done'}:{os.environ['PATH']}"}
    completed = subprocess.run(["bash", "-euo", "pipefail", "-c", script], cwd=clone, env=environment, timeout=600,
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL, text=True)
    assert completed.returncode == 0, completed.stdout[-3000:]
