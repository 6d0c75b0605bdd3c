# SPDX-License-Identifier: MIT
"""Drives Kdenlive and Shotcut on a virtual desktop. What they showed lies in the folder of VIREO_PICTURES.

pytest editors.py
"""

import hashlib
import json
import os
from pathlib import Path
from xml.etree import ElementTree

import desktop
import projects
import pytest
from desktop import BUILD, Desktop, Kdenlive, Shotcut, run

MOVING = [("vireo.solarize", {"Threshold": "0=0;24=100;49=254"}),
          ("vireo.bend", {"Horizontal Intensity": "0=0;49=30"}),
          ("vireo.color-replace", {"Similarity": 40, "Target Color": "0x00ff00ff", "Solid Colors": 1})]
OLD = [("frei0r.vireo_solarize", {"Threshold": "0=0;49=1"}), ("frei0r.vireo_bend", {"Frame Rate": "25"})]
ADDED = [("vireo.horizontal-flip", {})]
SHOWN = 50  # frames that are compared


@pytest.fixture(scope="module")
def installation(tmp_path_factory):
    return desktop.Installation(tmp_path_factory.mktemp("installation") / "prefix")


@pytest.fixture
def clip(tmp_path):
    return desktop.make_clip(tmp_path / "clip.mp4", projects.FRAMES)


@pytest.fixture
def screen(installation, tmp_path):
    with Desktop(installation, tmp_path / "desktop") as screen:
        yield screen


@pytest.fixture
def pictures(tmp_path):
    folder = Path(os.environ.get("VIREO_PICTURES", tmp_path / "pictures"))
    folder.mkdir(parents=True, exist_ok=True)
    return folder


def rendered(installation, folder, *what):
    """The frames that melt makes of a project or of a clip with filters."""
    result = folder / "melt.mkv"
    result.unlink(missing_ok=True)
    for _ in range(3):  # on a busy machine melt may end before its consumer has begun
        run("melt", "-silent", *what, "-consumer", f"avformat:{result}", "vcodec=ffv1", "pix_fmt=bgra",
            "mlt_image_format=rgba", "an=1", "real_time=-1", environment=installation.environment())
        if result.exists() and result.stat().st_size:
            break
    frames = run("ffmpeg", "-v", "error", "-i", result, "-frames:v", SHOWN, "-f", "rawvideo", "-pix_fmt", "bgra", "-")
    assert len(frames) == SHOWN * 1280 * 720 * 4
    return hashlib.sha256(frames).hexdigest()


def with_melt_alone(installation, folder, clip, chain):
    filters = [word for service, values in chain
               for word in ("-filter", service, *(f"{name}={value}" for name, value in values.items()))]
    return rendered(installation, folder, "-profile", "atsc_720p_25", clip, f"out={SHOWN - 1}", *filters)


def saved_filters(project):
    """What a project holds of our filters: their values by service."""
    found = {}
    for element in ElementTree.parse(project).getroot().iter("filter"):
        values = {entry.get("name"): entry.text or "" for entry in element.iter("property")}
        if "vireo" in values["mlt_service"]:
            found[values["mlt_service"]] = values
    return found


def starts_as_the_filter(values, name):
    """Whether the values of a saved filter are those that a fresh one has."""
    def plain(text):
        return text.split(";")[0].rpartition("=")[2].lower()

    for parameter in json.loads(run(BUILD / "bin/vireo", "info", "--json", name))["parameters"]:
        value, start = plain(values[parameter["name"]]), parameter["default"]
        if parameter["kind"] == "colour":
            assert start.lstrip("#") in value, parameter["name"]
        else:
            assert float(value) == float(start), parameter["name"]


@pytest.mark.parametrize("editor, suffix", [(Kdenlive, "kdenlive"), (Shotcut, "mlt")])
class TestBoth:
    def test_filters_start_with_their_own_values(self, editor, suffix, screen, clip, pictures, tmp_path):
        project = getattr(projects, editor.__name__.lower())(tmp_path / f"project.{suffix}", clip, [])
        with editor(screen) as program:
            program.open(project)
            program.find("vireo")
            screen.picture(pictures / f"{suffix}-list.png")
            for name in ("Levels", "Bend"):
                program.add(name)
                screen.picture(pictures / f"{suffix}-{name.lower()}.png")
                program.save()
                starts_as_the_filter(saved_filters(project)[f"vireo.{name.lower()}"], name)
                program.undo()

    def test_a_project_with_key_frames_renders_as_melt_does(
            self, editor, suffix, installation, screen, clip, pictures, tmp_path):
        project = getattr(projects, editor.__name__.lower())(tmp_path / f"project.{suffix}", clip, MOVING)
        with editor(screen) as program:
            program.open(project)
            program.select()
            # The picture of a frame does not hang on the way to it.
            program.step("Home", *["Right"] * 15)
            first = program.shown(pictures / f"{suffix}-frame.png")
            program.step(*["Right"] * 5)
            other = program.shown(tmp_path / "other.png")
            program.step(*["Left"] * 5)
            assert program.shown(tmp_path / "again.png") == first != other
            program.add("Horizontal Flip")
            program.save()
        assert set(saved_filters(project)) == {service for service, _ in MOVING + ADDED}
        assert rendered(installation, tmp_path, project, f"out={SHOWN - 1}") == with_melt_alone(
            installation, tmp_path, clip, MOVING + ADDED)


def test_projects_with_the_frei0r_plugins_still_open_in_kdenlive(installation, screen, clip, tmp_path):
    project = projects.kdenlive(tmp_path / "project.kdenlive", clip, OLD)
    with Kdenlive(screen) as program:
        program.open(project)
        program.add("Horizontal Flip")
        program.save()
    assert set(saved_filters(project)) == {service for service, _ in OLD + ADDED}
    assert rendered(installation, tmp_path, project, f"out={SHOWN - 1}") == with_melt_alone(
        installation, tmp_path, clip, OLD + ADDED)
