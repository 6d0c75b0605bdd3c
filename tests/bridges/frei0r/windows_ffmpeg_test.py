# SPDX-License-Identifier: GPL-2.0-or-later
"""The plug-ins for Windows in an ffmpeg.exe, which looks for nothing beside them: the frames are those of vireo.exe."""
import json
import os
import pathlib
import shlex
import sys

import numpy
import pytest

sys.path[:0] = [str(pathlib.Path(__file__).parent), str(pathlib.Path(__file__).parents[1])]
import hosts
from hosts import Effect
from same_bytes_test import CHAINS, assert_equal

BUILD = pathlib.Path(os.environ["VIREO_BUILD"])


@pytest.fixture(autouse=True)
def windows_programs(tmp_path, monkeypatch):
    """Both programs under the names that they have elsewhere."""
    (tmp_path / "bin").mkdir()
    for name, program in ("vireo", BUILD / "bin/vireo.exe"), ("ffmpeg", os.environ["VIREO_TESTED_FFMPEG"]):
        script = tmp_path / "bin" / name
        script.write_text(f"#!/bin/sh\nexec {os.environ['VIREO_EMULATOR']} {shlex.quote(str(program))} \"$@\"\n")
        script.chmod(0o755)
    monkeypatch.setattr(hosts, "BUILD", tmp_path)
    monkeypatch.setenv("PATH", f"{tmp_path}/bin:{os.environ['PATH']}")
    monkeypatch.chdir(tmp_path)


def with_ffmpeg(clip, chain, folder):
    return hosts.with_ffmpeg(clip, chain, folder, {"FREI0R_PATH": f"Z:{BUILD}/frei0r-1"})


@pytest.mark.parametrize("name", ["tones", "geometry", "time"])
def test_renders_as_vireo_does(name, tmp_path):
    chain = CHAINS[name]()
    clip = hosts.random_clip(48, 37, 8)
    expected = hosts.with_vireo(clip, chain, tmp_path, tmp_path / "bin/vireo")
    assert not numpy.array_equal(clip, expected)
    assert_equal(with_ffmpeg(clip, chain, tmp_path), expected)


def test_loads_every_plugin(tmp_path):
    filters = json.loads(hosts.run(tmp_path / "bin/vireo", "list", "--json"))
    assert len(list((BUILD / "frei0r-1").glob("*.dll"))) == len(filters)
    clip = hosts.random_clip(16, 11, 2)
    (tmp_path / "in.raw").write_bytes(clip.tobytes())
    names = ["vireo_" + "_".join(entry["name"].replace("&", "and").replace("(RGB)", "").split()).lower() for entry in filters]
    hosts.run("ffmpeg", "-v", "error", *hosts.stored(clip, tmp_path), "-vf", ",".join(f"frei0r={name}" for name in names),
              *hosts.RAW, "-", environment={"FREI0R_PATH": f"Z:{BUILD}/frei0r-1"})
