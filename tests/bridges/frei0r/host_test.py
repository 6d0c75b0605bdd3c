# SPDX-License-Identifier: MIT
"""Plug-ins in the hosts they are for: the pixels are those of the command line."""
import numpy
import pytest

import hosts
from hosts import BUILD, Effect

EFFECTS = {
    "numbers": lambda: Effect("Levels", **{"(RGB) Black Input Level": 20, "(RGB) Gamma": 180, "(B) White Output Level": 99}),
    "one number": lambda: Effect("Solarize", Threshold=101),
    "check box": lambda: Effect("Extract", Black_Input_Level=30, White_Input_Level=170, Softness=25, Invert=True),
    "colours": lambda: Effect(
        "Color Replace", Similarity=90, Target_Color=(130, 140, 128), Replace_Color=(1, 254, 77)),
    "below zero": lambda: Effect("Convolution Kernel", M11=-2, M22=5, M33=1, Offset=-7, Scale=3, Process_Alpha=True),
    "lens": lambda: Effect("Lens Distortion", Curvature=-40, Horizontal_Prism_FX=33, Fill_Color=(9, 99, 199)),
    "time": lambda: Effect("Bend", Horizontal_Intensity=30, Vertical_Source=3, Fill_Color=(200, 100, 50)),
    "earlier frames": lambda: Effect("Ghosting"),
}


def assert_equal(ours, expected):
    """The first frame that differs says more than the whole clip."""
    assert ours.shape == expected.shape
    for number, (one, other) in enumerate(zip(ours, expected)):
        assert numpy.array_equal(one, other), f"frame {number}: {numpy.argwhere(one != other)[0]}"


@pytest.fixture(scope="module", params=EFFECTS)
def effect(request):
    return EFFECTS[request.param]()


@pytest.fixture
def clip_and_result(effect, tmp_path):
    """Makes a clip, and what the command line renders of it."""
    def make(width):
        clip = hosts.random_clip(width, 47, 12)
        return clip, hosts.with_vireo(clip, effect, tmp_path)
    return make


def test_ffmpeg_renders_as_vireo_does(effect, clip_and_result, tmp_path):
    # Other widths than multiples of 16 FFmpeg hands over with gaps between rows, which frei0r does not know.
    clip, expected = clip_and_result(48)
    assert not numpy.array_equal(clip, expected)
    assert_equal(hosts.with_ffmpeg(clip, effect.for_ffmpeg(), tmp_path), expected)


def test_melt_and_gstreamer_render_as_vireo_does(effect, clip_and_result, tmp_path):
    clip, expected = clip_and_result(62)
    assert_equal(hosts.with_gstreamer(clip, effect, tmp_path), expected)
    assert_equal(hosts.with_melt(clip, effect, tmp_path), expected)


def test_ffmpeg_loads_every_plugin(tmp_path):
    plugins = sorted(path.stem for path in (BUILD / "frei0r-1").glob("*.so"))
    assert len(plugins) == 22
    clip = hosts.random_clip(16, 11, 2)
    hosts.with_ffmpeg(clip, ",".join(f"frei0r={plugin}" for plugin in plugins), tmp_path)
