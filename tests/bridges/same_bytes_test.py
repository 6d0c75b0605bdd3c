# SPDX-License-Identifier: MIT
"""One chain through every door: the command line, a program in C on the engine, the frei0r plug-ins and, where it has
been built, the page's engine. Pixels and sentences are the same."""
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
    "tones": lambda: [Effect("Levels", **{"(RGB) Gamma": 140, "(B) Black Input Level": 30}),
                      Effect("Solarize", Threshold=90), Effect("Color Balance (RGB)", Red=180)],
    "neighbours": lambda: [Effect("Convolution Kernel", M11=-2, M22=5, M33=1, Offset=-7, Scale=3),
                           Effect("Antialias"), Effect("Camera Blur", Percent_Blur=7)],
    "geometry": lambda: [Effect("Lens Distortion", Curvature=-40, Fill_Color=(9, 99, 199)), Effect("Vertical Flip"),
                         Effect("Horizontal Flip"), Effect("Replicate"), Effect("Bend", Horizontal_Intensity=30)],
    "colours": lambda: [Effect("Color Replace", Similarity=90, Target_Color=(130, 140, 128), Replace_Color=(1, 254, 77)),
                        Effect("Color Pass", Similarity=30, Color=(1, 254, 77)), Effect("Ghosting")],
}

RENDER_ON_THE_PAGE = """
import { readFileSync, writeFileSync } from 'node:fs';
const [engine, chain, width, height, from, to] = process.argv.slice(1);
const { loadEngine } = await import(engine);
const picture = { width: Number(width), height: Number(height), data: new Uint8ClampedArray(readFileSync(from)) };
writeFileSync(to, (await loadEngine()).render(chain, picture, { frame: 0, frames: 1, fetch: () => picture }).data);
"""


@pytest.fixture(scope="module")
def picture():
    """Opaque, since a picture file of three channels goes through the C example."""
    # A multiple of 16 wide: otherwise FFmpeg hands over gaps between rows, which frei0r does not know.
    return hosts.random_clip(48, 37, 1, opaque=True)


@pytest.fixture(params=CHAINS)
def chain(request):
    return CHAINS[request.param]()


def text_of(chain):
    return "; ".join(effect.for_vireo() for effect in chain)


def with_vireo(clip, chain, folder):
    Image.fromarray(clip[0][..., [2, 1, 0]]).save(folder / "in.png")
    options = [word for effect in chain for word in ("-f", effect.for_vireo())]
    hosts.run(BUILD / "bin/vireo", "render", "in.png", "out.png", *options, "--overwrite", "--quiet", cwd=folder)
    return numpy.asarray(Image.open(folder / "out.png").convert("RGB"))


def with_c(clip, chain, folder):
    Image.fromarray(clip[0][..., [2, 1, 0]]).save(folder / "in.ppm")
    hosts.run(BUILD / "bin/example_chain", folder / "in.ppm", folder / "out.ppm", text_of(chain))
    return numpy.asarray(Image.open(folder / "out.ppm"))


def with_page(clip, chain, folder):
    _, height, width, _ = clip.shape
    (folder / "in.rgba").write_bytes(clip[0][..., [2, 1, 0, 3]].tobytes())
    hosts.run("node", "--input-type=module", "-e", RENDER_ON_THE_PAGE, PAGE_ENGINE, text_of(chain), width, height,
              folder / "in.rgba", folder / "out.rgba")
    return numpy.frombuffer((folder / "out.rgba").read_bytes(), numpy.uint8).reshape(height, width, 4)[..., :3]


def test_a_program_in_c_renders_as_vireo_does(picture, chain, tmp_path):
    ours = with_c(picture, chain, tmp_path)
    assert not numpy.array_equal(ours, picture[0][..., [2, 1, 0]])
    assert numpy.array_equal(ours, with_vireo(picture, chain, tmp_path))


def test_frei0r_renders_as_vireo_does(picture, chain, tmp_path):
    ours = hosts.with_ffmpeg(picture, ",".join(effect.for_ffmpeg() for effect in chain), tmp_path)
    assert numpy.array_equal(ours[0][..., [2, 1, 0]], with_vireo(picture, chain, tmp_path))


@pytest.mark.skipif(not PAGE_ENGINE.exists() or shutil.which("node") is None, reason="the page is not built")
def test_the_page_renders_as_vireo_does(picture, chain, tmp_path):
    assert numpy.array_equal(with_page(picture, chain, tmp_path), with_vireo(picture, chain, tmp_path))


@pytest.mark.parametrize("text", [
    "Gama", "color", "Solarize:treshold=2", "Solarize:threshold=300", "Solarize:threshold", "Black & White:x=2",
    "Solarize:threshold=1,thresh=2", "Solarize:threshold=0@5s..9@1s", "Solarize:mix=101%", "Solarize:from=soon",
    "Color Pass:color=reddish", "Extract:invert=perhaps", "Levels:(g)=3",
])
def test_sentences_are_the_same(picture, text, tmp_path):
    Image.fromarray(picture[0][..., :3]).save(tmp_path / "in.ppm")
    said = [subprocess.run([BUILD / "bin" / words[0], *words[1:]], cwd=tmp_path, capture_output=True, text=True)
            for words in (["vireo", "render", "in.ppm", "out.png", "-f", text], ["example_chain", "in.ppm", "out.ppm", text])]
    assert [completed.returncode for completed in said] == [2, 1]
    sentence = said[1].stderr.splitlines()[0]
    assert sentence and said[0].stderr.splitlines()[0] == f"vireo: {sentence}."
    assert not os.path.exists(tmp_path / "out.ppm")
