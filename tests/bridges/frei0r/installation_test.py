# SPDX-License-Identifier: MIT
"""An installation works wherever it is moved to, and brings Kdenlive's descriptions."""
import json
import os
import shutil
from xml.etree import ElementTree

import numpy
import pytest

import hosts
from hosts import BUILD, Effect, run


@pytest.fixture(scope="module")
def installation(tmp_path_factory):
    """Installed into one folder, moved into another."""
    folder = tmp_path_factory.mktemp("installation")
    cmake = os.environ.get("VIREO_CMAKE", "cmake")
    run(cmake, "--install", BUILD, "--prefix", folder / "first")
    shutil.move(folder / "first", folder / "second place")
    return folder / "second place"


def only(folder, pattern):
    (found,) = folder.glob(pattern)
    return found


def test_everything_lies_where_hosts_look(installation):
    libraries = only(installation, "**/frei0r-1").parent
    assert sorted(path.name for path in installation.iterdir()) == ["bin", "include", "lib", "share"]
    assert len(list((libraries / "frei0r-1").glob("vireo_*.so"))) == 22
    assert [path.name for path in (libraries / "vireo").iterdir()] == ["VireoFiltersMetaPlugin.vrmp"]
    for binary in [installation / "bin/vireo", libraries / "vireo/VireoFiltersMetaPlugin.vrmp",
                   libraries / "frei0r-1/vireo_levels.so"]:
        found = run("ldd", binary).decode().split("libVireoHost.so.1 => ")[1].split(" (")[0]
        assert os.path.normpath(found) == str(libraries / "libVireoHost.so.1")


def test_shells_find_manual_page_completions_and_presets(installation, tmp_path):
    for place in ("man/man1/vireo.1", "bash-completion/completions/vireo", "zsh/*/_vireo",
                  "fish/vendor_completions.d/vireo.fish"):
        assert b"vireo" in only(installation / "share", place).read_bytes()
    presets = installation / "share/vireo/presets"
    listed = json.loads(run(installation / "bin/vireo", "presets", "--json",
                            environment={"XDG_CONFIG_HOME": str(tmp_path)}))
    assert len(listed) > 8 and {os.path.dirname(preset["file"]) for preset in listed} == {str(presets)}


def test_program_and_plugins_run_from_there(installation, tmp_path):
    effect = Effect("Camera View", Longitude=20, Roll=5)
    clip = hosts.random_clip(48, 47, 3)
    expected = hosts.with_vireo(clip, effect, tmp_path)
    moved = hosts.with_vireo(clip, effect, tmp_path, program=installation / "bin/vireo")
    assert numpy.array_equal(moved, expected)
    environment = hosts.plugin_environment(only(installation, "**/frei0r-1"))
    # The build's own folder cannot help out: FFmpeg looks nowhere else.
    ours = hosts.with_ffmpeg(clip, effect.for_ffmpeg(), tmp_path, environment)
    assert numpy.array_equal(ours, expected)


def test_kdenlive_gets_a_description_of_every_plugin(installation):
    folder = installation / "share/kdenlive/effects"
    plugins = {path.stem for path in only(installation, "**/frei0r-1").glob("*.so")}
    assert {path.stem for path in folder.iterdir()} == plugins
    for plugin in plugins:
        effect = ElementTree.parse(folder / f"{plugin}.xml").getroot()
        assert effect.get("tag") == effect.get("id") == f"frei0r.{plugin}"
        filter_name = effect.find("name").text.removeprefix("Vireo ")
        parameters = Effect(filter_name).info["parameters"]
        described = {parameter.get("name"): parameter for parameter in effect.iter("parameter")}
        assert list(described)[:len(parameters)] == [parameter["name"] for parameter in parameters]
        for parameter in parameters:
            entry = described[parameter["name"]]
            if entry.get("type") == "animated":
                # What Kdenlive hands over at the ends and at the start.
                factor = float(entry.get("factor"))
                assert [float(entry.get(end)) / factor for end in ("min", "max")] == [0, 1]
                span = parameter["maximum"] - parameter["minimum"]
                assert round(float(entry.get("default")) * span) == parameter["default"] - parameter["minimum"]
            elif entry.get("type") == "list":
                values = entry.get("paramlist").split(";")
                assert len(values) == len(entry.find("paramlistdisplay").text.split(","))
                span = parameter["maximum"] - parameter["minimum"]
                assert [round(float(value) * span) for value in values] == list(range(span + 1))
                assert entry.get("default") in values
            else:
                assert (entry.get("type"), parameter["kind"]) in {("bool", "boolean"), ("color", "colour")}
