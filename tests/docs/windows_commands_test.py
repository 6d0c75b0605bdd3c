# SPDX-License-Identifier: MIT
"""Runs the Windows commands of the pages, in their order. Dialogs and the preview's window wait for their user, and they and
the installer are tested elsewhere; settings that were saved without a dialog stand in for what it saves."""
import os
import pathlib
import re
import shlex
import subprocess

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAM = shlex.split(os.environ["VIREO_PROGRAM"])
PAGES = ["README.md", "docs/guide.md", "docs/windows.md"]


@pytest.mark.parametrize("page", PAGES)
def test_commands_work(page, tmp_path):
    blocks = re.findall(r"^```bat\n(.*?)^```$", (ROOT / page).read_text(), re.MULTILINE | re.DOTALL)
    assert blocks
    for name, *options in (("photo.png", "-frames:v", "1"), ("photo.jpg", "-frames:v", "1"), ("clip.mp4",), ("clip.mov",)):
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=64x48:d=2", "-f", "lavfi", "-i", "sine=d=2",
                        *options, tmp_path / name], check=True)
    for command in "".join(blocks).splitlines():
        program, *words = shlex.split(command)
        if program.endswith(("-setup.exe", "Uninstall.exe")) or words[0] == "preview":
            continue
        assert program == "vireo"
        if words[0] == "settings":
            words = ["render", "-f", words[1], "--save-settings", words[words.index("--save-settings") + 1]]
        completed = subprocess.run([*PROGRAM, *words], cwd=tmp_path, capture_output=True, text=True, timeout=120)
        assert completed.returncode == 0, (words, completed.stderr)
