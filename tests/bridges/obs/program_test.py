# SPDX-License-Identifier: MIT
"""OBS for real. ./check --long runs it, as the step "obs"."""
import re
import subprocess
import time

import numpy
import pytest
from PIL import Image

from program import HEIGHT, RATE, WIDTH, Display, Obs, rendered

CHAINS = ["Solarize:threshold=60%", "Vertical Flip", "Levels:(rgb) gamma=130; Camera Blur:percent blur=20"]


@pytest.fixture(scope="module")
def display():
    with Display() as name:
        yield name


@pytest.fixture(scope="module")
def picture():
    """Opaque, without two equal neighbours."""
    pixels = numpy.random.default_rng(1).integers(0, 256, (HEIGHT, WIDTH, 4), numpy.uint8)
    pixels[..., 3] = 255
    return pixels


@pytest.fixture(scope="module")
def obs(display, picture, tmp_path_factory):
    folder = tmp_path_factory.mktemp("media")
    Image.fromarray(picture).save(folder / "picture.png")
    subprocess.run(["ffmpeg", "-v", "error", "-loop", "1", "-i", folder / "picture.png", "-t", "5", "-r", str(RATE), "-c:v",
                    "rawvideo", "-pix_fmt", "bgra", folder / "clip.avi"], check=True)
    obs = Obs(tmp_path_factory.mktemp("home"), display)
    for name, kind, settings in (
            ("colour", "color_source_v3", {"color": 0xFF336699, "width": WIDTH, "height": HEIGHT}),
            ("image", "image_source", {"file": str(folder / "picture.png")}),
            ("clip", "ffmpeg_source", {"local_file": str(folder / "clip.avi"), "looping": True})):
        obs("CreateInput", sceneName="Scene", inputName=name, inputKind=kind, inputSettings=settings)
    yield obs
    log = obs.end()
    # OBS itself leaves some behind.
    assert int(re.search(r"Number of memory leaks: (\d+)", log)[1]) < 50


@pytest.mark.parametrize("source", ["colour", "image", "clip", "Scene"])
def test_pixels_are_those_of_the_command_line(obs, source, picture, tmp_path):
    if source != "colour":
        obs.becomes(source, picture)
    plain = obs.seen(source)
    assert plain[..., 3].min() == 255
    obs.add_filter(source, mode="text", text=CHAINS[0])
    for chain in CHAINS:
        obs.set_filter(source, text=chain)
        obs.becomes(source, rendered(plain, chain, tmp_path))
    obs.set_filter(source, mode="filters", filters=[{"value": "Solarize"}, {"value": "Horizontal Flip"}],
                   **{"1.Solarize.Threshold": 20})
    obs.becomes(source, rendered(plain, "Solarize:threshold=20%; Horizontal Flip", tmp_path))
    obs("SetSourceFilterEnabled", sourceName=source, filterName="Vireo", filterEnabled=False)
    obs.becomes(source, plain)
    obs("RemoveSourceFilter", sourceName=source, filterName="Vireo")


def test_hotkeys_go_through_the_presets(obs):
    obs.add_filter("image")
    time.sleep(3 / RATE)
    presets = set()
    for _ in range(3):
        obs("TriggerHotkeyByName", hotkeyName="Vireo.NextPreset.Vireo")
        time.sleep(1 / RATE)
        presets.add(obs("GetSourceFilter", sourceName="image", filterName="Vireo")["filterSettings"]["preset"])
    obs("TriggerHotkeyByName", hotkeyName="Vireo.Off.Vireo")
    time.sleep(1 / RATE)
    assert len(presets) == 3
    assert not obs("GetSourceFilter", sourceName="image", filterName="Vireo")["filterEnabled"]
    obs("RemoveSourceFilter", sourceName="image", filterName="Vireo")


def test_a_hundred_filters_come_and_go(obs):
    def come_and_go():
        obs.add_filter("clip", "one", mode="text", text="Ghosting")
        obs.add_filter("clip", "two", mode="preset", preset="vhs")
        obs("SetSourceFilterIndex", sourceName="clip", filterName="two", filterIndex=0)
        obs.seen("clip")
        obs("SetSourceFilterEnabled", sourceName="clip", filterName="one", filterEnabled=False)
        for name in ("one", "two"):
            obs("RemoveSourceFilter", sourceName="clip", filterName=name)

    for _ in range(20):
        come_and_go()
    before = obs.memory()
    for _ in range(100):
        come_and_go()
    # A single frame that stayed behind each time would be 90 MiB.
    assert obs.memory() - before < 40 * 1024


def test_a_slow_chain_leaves_obs_its_frame_rate(obs, picture):
    obs.add_filter("clip", mode="text", text="; ".join(["Camera Blur:percent blur=90"] * 500))
    before = obs("GetStats")
    time.sleep(4)
    after = obs("GetStats")
    frames, late = (after[name] - before[name] for name in ("renderTotalFrames", "renderSkippedFrames"))
    assert frames >= 3 * RATE and late <= frames / 4
    obs("RemoveSourceFilter", sourceName="clip", filterName="Vireo")
    obs.becomes("clip", picture)
