# SPDX-License-Identifier: MIT
"""The elements in GStreamer's own programs, beside what `vireo render` makes of the same frames."""
import json
import pathlib
import subprocess
import sys
from types import SimpleNamespace

import numpy
import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "frei0r"))
from hosts import BUILD, RATE, Effect, dashed, random_clip, run, stored, with_vireo

FRAMES = 9


@pytest.fixture(scope="module")
def environment(tmp_path_factory):
    return {"GST_PLUGIN_PATH": str(BUILD / "gstreamer-1.0"), "GST_REGISTRY": str(tmp_path_factory.mktemp("registry") / "registry"),
            "GST_REGISTRY_FORK": "no"}


def parsed(clip, folder):
    """A pipeline's beginning that hands out a clip."""
    stored(clip, folder)
    _, height, width, _ = clip.shape
    return ["filesrc", f"location={folder / 'in.raw'}", "!", "rawvideoparse", "format=bgra", f"width={width}", f"height={height}",
            f"framerate={RATE}/1"]


def pixels(path, clip):
    return numpy.fromfile(path, numpy.uint8).reshape(clip.shape)


def changed(name):
    """A filter with every parameter away from where it starts."""
    effect = Effect(name)
    values = {"number": lambda p: int(p["minimum"] + (p["maximum"] - p["minimum"]) * 0.7), "colour": lambda p: (200, 60, 250),
              "boolean": lambda p: not p["default"]}
    effect.values = {p["name"]: values[p["kind"]](p) for p in effect.info["parameters"]}
    effect.given = effect.info["parameters"]
    return effect


def element(effect):
    """As gst-launch-1.0 takes it."""
    texts = {int: str, bool: lambda truth: str(truth).lower(), tuple: lambda rgb: "0xff" + bytes(rgb).hex()}
    given = [f"{'-'.join(filter(None, dashed(name).split('-')))}={texts[type(value)](value)}" for name, value in effect.values.items()]
    return [effect.plugin.replace("_", ""), *given, *[f"clip-length={FRAMES}"] * effect.timed]


def test_every_element_renders_as_vireo_does(environment, tmp_path):
    clip = random_clip(61, 37, FRAMES)
    filters = [changed(entry["name"]) for entry in json.loads(run(BUILD / "bin/vireo", "list", "--json"))]
    branches = [["t.", "!", "queue", "!", *element(effect), "!", "filesink", f"location={tmp_path / effect.plugin}"]
                for effect in filters]
    run("gst-launch-1.0", "-q", *parsed(clip, tmp_path), "!", "tee", "name=t", *sum(branches, []), environment=environment)
    for effect in filters:
        expected = with_vireo(clip, [effect], tmp_path)
        assert numpy.array_equal(pixels(tmp_path / effect.plugin, clip), expected), effect.name
    assert len(filters) == 22


def test_a_chain_with_key_frames_renders_as_vireo_does(environment, tmp_path):
    clip = random_clip(48, 31, FRAMES)
    texts = ["Solarize:threshold=0@0s..200@0.3s,from=2f", "Ghosting:mix=60%", "Bend:horizontal source=3"]
    run("gst-launch-1.0", "-q", *parsed(clip, tmp_path), "!", "vireo", f"filters={'; '.join(texts)}", "!", "filesink",
        f"location={tmp_path / 'out'}", environment=environment)

    expected = with_vireo(clip, [SimpleNamespace(for_vireo=lambda text=text: text) for text in texts], tmp_path)
    assert numpy.array_equal(pixels(tmp_path / "out", clip), expected)


def test_nothing_leaks(environment):
    names = [changed(entry["name"]).plugin.replace("_", "") for entry in json.loads(run(BUILD / "bin/vireo", "list", "--json"))]
    chain = sum([["!", name] for name in names], [])
    told = subprocess.run(["gst-launch-1.0", "videotestsrc", "num-buffers=20", "!", "video/x-raw,format=RGB,width=64,height=48",
                           "!", "vireo", "filters=Ghosting", *chain, "!", "fakesink"], capture_output=True, text=True, timeout=100,
                          env={"PATH": "/usr/bin", **environment, "GST_TRACERS": "leaks", "GST_DEBUG": "GST_TRACER:7,vireo:2", "GST_DEBUG_NO_COLOR": "1"})
    assert told.returncode == 0, told.stderr
    alive = [line for line in told.stderr.splitlines() if ":: object-alive," in line]
    assert not alive, alive
    assert "GST_TRACER" in told.stderr


def test_inspection_shows_ranges_words_and_starts(environment):
    def shown(name):
        return run("gst-inspect-1.0", name, environment=environment).decode()

    levels = shown("vireolevels")
    assert "Integer. Range: 0 - 1000 Default: 100" in levels.split("rgb-gamma")[1]
    assert "controllable" in levels and "Filter/Effect/Video" in levels
    assert '"sine"' in shown("vireobend").split("horizontal-source")[1] and "(1): circle" in shown("vireobend")
    assert "Default: 4294901760" in shown("vireocolorreplace").split("target-color")[1]
    assert "clip-length" in shown("vireo") and "clip-length" not in shown("vireosolarize")


def test_without_the_module_it_says_so(environment, tmp_path):
    told = subprocess.run(["gst-inspect-1.0", "vireosolarize"], capture_output=True, text=True, timeout=100,
                          env={"PATH": "/usr/bin", **environment, "GST_REGISTRY": str(tmp_path / "registry"), "VIREO_MODULE": "/nowhere"})
    assert told.returncode != 0 and "vireo: " in told.stderr and "/nowhere" in told.stderr
