# SPDX-License-Identifier: MIT
"""One chain through every door: the command line, a program in C on the engine, the frei0r plug-ins and, where it has
been built, the page's engine. Pixels and sentences are the same."""
import json
import os
import pathlib
import shutil
import subprocess
import sys

import numpy
import pytest
from PIL import Image

sys.path.insert(0, str(pathlib.Path(__file__).parent / "frei0r"))
import hosts
from hosts import BUILD, Effect

PAGE_ENGINE = pathlib.Path(__file__).resolve().parents[2] / "build/web/engine.mjs"

CHAINS = {
    "tones": lambda: [Effect("Levels", **{"(RGB) Gamma": 140, "(B) Black Input Level": 30, "(B) White Output Level": 99}),
                      Effect("Solarize", Threshold=90), Effect("Color Balance (RGB)", Red=180)],
    "neighbours": lambda: [Effect("Convolution Kernel", M11=-2, M22=5, M33=1, Offset=-7, Scale=3, Process_Alpha=True),
                           Effect("Antialias"), Effect("Camera Blur", Percent_Blur=7)],
    "geometry": lambda: [Effect("Lens Distortion", Curvature=-40, Horizontal_Prism_FX=33, Fill_Color=(9, 99, 199)),
                         Effect("Vertical Flip"), Effect("Horizontal Flip"), Effect("Replicate")],
    "colours": lambda: [Effect("Color Replace", Similarity=90, Target_Color=(130, 140, 128), Replace_Color=(1, 254, 77)),
                        Effect("Color Pass", Similarity=30, Color=(1, 254, 77))],
    "check box": lambda: [Effect("Extract", Black_Input_Level=30, White_Input_Level=170, Softness=25, Invert=True)],
    "time": lambda: [Effect("Bend", Horizontal_Intensity=30, Vertical_Source=3, Fill_Color=(200, 100, 50)), Effect("Ghosting")],
}
RENDER_ON_THE_PAGE = """
import { readFileSync, writeFileSync } from 'node:fs';
const [engine, chain, width, height, from, to] = process.argv.slice(1);
const { loadEngine } = await import(engine);
const picture = { width: Number(width), height: Number(height), data: new Uint8ClampedArray(readFileSync(from)) };
writeFileSync(to, (await loadEngine()).render(chain, picture, { frame: 0, frames: 1, fetch: () => picture }).data);
"""


@pytest.fixture(params=CHAINS)
def chain(request):
    return CHAINS[request.param]()


def assert_equal(ours, expected):
    """The first frame that differs says more than the whole clip."""
    assert ours.shape == expected.shape
    for number, (one, other) in enumerate(zip(ours, expected)):
        assert numpy.array_equal(one, other), f"frame {number}: {numpy.argwhere(one != other)[0]}"


def rendered(clip, chain, folder):
    """What C programs and, where it has been built, the page make of the first frame, without alpha."""
    text = "; ".join(map(Effect.for_vireo, chain))
    Image.fromarray(clip[0][..., [2, 1, 0]]).save(folder / "in.ppm")
    hosts.run(BUILD / "bin/example_chain", folder / "in.ppm", folder / "out.ppm", text)
    yield numpy.asarray(Image.open(folder / "out.ppm"))
    if PAGE_ENGINE.exists() and shutil.which("node"):
        _, height, width, _ = clip.shape
        (folder / "in.rgba").write_bytes(clip[0][..., [2, 1, 0, 3]].tobytes())
        hosts.run("node", "--input-type=module", "-e", RENDER_ON_THE_PAGE, PAGE_ENGINE, text, width, height,
                  folder / "in.rgba", folder / "out.rgba")
        yield numpy.frombuffer((folder / "out.rgba").read_bytes(), numpy.uint8).reshape(height, width, 4)[..., :3]


def test_frei0r_hosts_render_as_vireo_does(chain, tmp_path):
    # Widths that are no multiples of 16 FFmpeg hands over with gaps between rows, which frei0r does not know.
    for width, doors in ((48, [hosts.with_ffmpeg]), (62, [hosts.with_gstreamer, hosts.with_melt])):
        clip = hosts.random_clip(width, 37, 8)
        expected = hosts.with_vireo(clip, chain, tmp_path)
        assert not numpy.array_equal(clip, expected)
        for door in doors:
            assert_equal(door(clip, chain, tmp_path), expected)


def test_programs_on_the_engine_render_as_vireo_does(chain, tmp_path):
    clip = hosts.random_clip(48, 37, 1, opaque=True)
    expected = hosts.with_vireo(clip, chain, tmp_path)[0][..., [2, 1, 0]]
    for result in rendered(clip, chain, tmp_path):
        assert numpy.array_equal(result, expected)


def test_ffmpeg_loads_every_plugin(tmp_path):
    filters = json.loads(hosts.run(BUILD / "bin/vireo", "list", "--json"))
    assert len(list((BUILD / "frei0r-1").glob("*.so"))) == len(filters)
    hosts.with_ffmpeg(hosts.random_clip(16, 11, 2), [Effect(entry["name"]) for entry in filters], tmp_path)


@pytest.mark.parametrize("text", ["Gama", "Solarize:treshold=2", "Solarize:threshold=300", "Solarize:threshold"])
def test_sentences_are_the_same(text, tmp_path):
    Image.new("RGB", (4, 3)).save(tmp_path / "in.ppm")
    said = [subprocess.run([BUILD / "bin" / words[0], *words[1:]], cwd=tmp_path, capture_output=True, text=True)
            for words in (["vireo", "render", "in.ppm", "out.png", "-f", text], ["example_chain", "in.ppm", "out.ppm", text])]
    assert [completed.returncode for completed in said] == [2, 1]
    sentence = said[1].stderr.splitlines()[0]
    assert sentence and said[0].stderr.splitlines()[0] == f"vireo: {sentence}."
    assert not os.path.exists(tmp_path / "out.ppm")
