# SPDX-License-Identifier: MIT
"""Chains as Python has them: settings, time, streams, and sentences that are the program's."""
import ast
import copy
import json
import pathlib
import pickle
import re
import subprocess

import numpy
import pytest
from PIL import Image

import vireo
from conftest import PROGRAM, picture, program

TEXT = 'Levels:(RGB) Gamma=130; Camera Blur:Percent Blur=0@0s..40@4s,from=1s,mix=50%; Color Pass:Color=#010203,Reverse=true'
PACKAGE = pathlib.Path(vireo.__file__).parent


def test_a_chain_reads_as_it_is_written(tmp_path):
    chain = vireo.Chain("levels:(rgb) gam=130", "Camera Blur:percent blur=0@0s..40@4s,from=1s,mix=50")
    chain.append("color pass")
    chain[-1]["color"], chain[-1]["rev"] = (1, 2, 3), numpy.True_
    assert str(chain) == str(vireo.Chain(TEXT)) == "; ".join(map(str, chain)) == TEXT
    chain.threads = 2
    for other in (eval(repr(chain)), chain.copy(), copy.copy(chain), pickle.loads(pickle.dumps(chain))):
        assert str(other) == TEXT and other.threads == 2
    chain.save(tmp_path / "look.json")
    program("render", "--help", "--settings", tmp_path / "look.json")
    again = vireo.Chain.load(tmp_path / "look.json")
    assert str(again) == TEXT
    # What was not changed comes back byte for byte.
    odd = (tmp_path / "look.json").read_text().replace("  ", "\t") + "\n\n"
    (tmp_path / "odd.json").write_text(odd)
    vireo.Chain.load(str(tmp_path / "odd.json")).save(tmp_path / "same.json")
    assert (tmp_path / "same.json").read_text() == odd


def test_filters_of_a_chain():
    chain = vireo.Chain("Solarize", vireo.filters()[0], preset="noir")
    assert [settings.filter.name for settings in chain][-2:] == ["Solarize", "Alpha Glow"]
    chain.move(-1, 0)
    while len(chain) > 2:
        del chain[1]
    assert str(chain) == "Alpha Glow; Solarize" and repr(chain[1]) == "Solarize" and len(chain[:5]) == 2
    for wrong in (2, -3):
        with pytest.raises(IndexError, match="the chain has no filter at this position"):
            chain[wrong]


def test_values():
    levels, blur, color = vireo.Chain(TEXT)
    assert levels["gamma"] == 130 and levels["(g) gamma"] == 100
    levels["gamma"] = "40"
    del levels["(rgb) gamma"]
    assert levels["gamma"] == 100 and str(levels) == "Levels"
    assert (color["color"], color["reverse"], color["similarity"]) == ("#010203", True, 10)
    assert (blur["percent"], blur["from"], blur["mix"]) == ("0@0s..40@4s", "1s", "50%")
    assert [blur.at("percent blur", number=n, rate=25) for n in (0, 50, 200)] == [0, 20, 40]
    assert blur.at("percent", seconds=1) == 10 and color.at("color") == "#010203" and color.at("rev") is True
    assert dict(color) == {"Similarity": 10, "Reverse": True, "Color": "#010203"}
    assert "reverse" in color and "gamma" not in color
    assert color.is_set("color") and not color.is_set("similarity")


@pytest.mark.parametrize("text", ["Gama", "Camera", "Solarize:threshold=1.5", "Solarize:thr=1,bar=2", "Solarize:thr=0@1s..9@0s"])
def test_sentences_are_the_programs(text, tmp_path):
    said = program("render", "in.png", tmp_path / "out.png", "-f", text, status=2)
    with pytest.raises(ValueError) as raised:
        vireo.Chain(text)
    assert isinstance(raised.value, vireo.Error) and f"vireo: {raised.value}.\n" in said


def test_what_an_error_is_about():
    with pytest.raises(vireo.Error) as raised:
        vireo.Chain("Solarize; Levels:(r) gamma=5000")
    error = raised.value
    assert (error.offset, error.filter, error.parameter, error.value) == (27, "Levels", "(R) Gamma", "5000")
    for refused in (lambda: vireo.Chain(preset="nothing like it"), lambda: vireo.Chain(threads=-1), lambda: vireo.Chain.load("missing")):
        with pytest.raises(vireo.Error, match="there is no preset|threads are 1 to 1024|missing"):
            refused()


def test_time():
    frame = picture(20, 30, 3)
    chain = vireo.Chain("Solarize:threshold=0@0s..254@2s")
    for moment, threshold in [({"number": 25}, 127), ({"number": 30, "rate": 15}, 254), ({"number": 9, "seconds": 0.5}, 64)]:
        assert numpy.array_equal(chain(frame, **moment), vireo.Chain(f"Solarize:threshold={threshold}")(frame))
    # Fields are pictures of their own.
    blur = vireo.Chain("Camera Blur:percent blur=9")
    for field in (0, 1):
        assert numpy.array_equal(blur(frame, interlaced="top")[field::2], blur(frame[field::2]))
    with pytest.raises(vireo.Error, match="interlaced is \"top\" or \"bottom\", not 'middle'"):
        chain(frame, interlaced="middle")


@pytest.mark.parametrize("threads", [1, 3])
def test_streams_keep_earlier_frames(threads, tmp_path):
    clip = [picture(40, 50, 4, seed=n) for n in range(20)]
    chain = vireo.Chain("Solarize:threshold=0@0f..254@20f", "Ghosting", "Horizontal Hold", threads=threads)
    streamed = list(chain.stream(clip, rate=30))
    assert chain.earlier_frames > 0
    for number in (19, 3, 11, 0):
        alone = chain(clip[number], number=number, frames=20, rate=30, earlier=clip.__getitem__)
        assert numpy.array_equal(alone, streamed[number]), number
    (tmp_path / "in").mkdir()
    for number, frame in enumerate(clip):
        Image.fromarray(frame[..., :3]).save(tmp_path / f"in/{number}.png")
    program("render", tmp_path / "in/%d.png", tmp_path / "%d.png", "-f", "Ghosting")
    ghosts = vireo.Chain("Ghosting").stream(frame[..., :3] for frame in clip)
    for number, ours in enumerate(ghosts):
        assert numpy.array_equal(ours, numpy.asarray(Image.open(tmp_path / f"{number}.png"))[..., :3]), number


def test_a_stream_is_lazy_and_its_chain_may_change():
    chain = vireo.Chain("Solarize:threshold=0")
    frame = picture(8, 8, 3)
    stream = chain.stream(iter([frame, frame]))
    first = next(stream)
    chain[0]["threshold"] = 254
    assert numpy.array_equal(next(stream), vireo.Chain("Solarize:threshold=254")(frame)) and not numpy.array_equal(first, 255 - frame)
    with pytest.raises(vireo.Error, match='a layout is "rgb" or "bgr", not \'gbr\''):
        chain.stream([], layout="gbr")


def test_earlier_frames_that_fail():
    frame, chain = picture(8, 8, 3), vireo.Chain("Ghosting", threads=2)
    with pytest.raises(ZeroDivisionError):
        chain(frame, number=20, earlier=lambda n: 1 // 0)
    with pytest.raises(vireo.Error, match="frame 16 is not there"):
        chain(frame, number=20, earlier=lambda n: None)
    with pytest.raises(vireo.Error, match="has not the shape and type"):
        chain(frame, number=20, earlier=lambda n: frame[:4])

    def change(n):
        chain[0]["mix"] = 10

    with pytest.raises(vireo.Error, match="a chain cannot be changed while it renders"):
        chain(frame, number=20, earlier=change)
    chain[0]["mix"] = 10


def test_the_filters_are_the_programs():
    listed = json.loads(subprocess.check_output([PROGRAM, "list", "--json"]))
    ours = {f.id: f for f in vireo.filters()}
    assert len(ours) == len(listed) == 22
    for entry in listed:
        info = json.loads(subprocess.check_output([PROGRAM, "info", str(entry["id"]), "--json"]))
        f = ours[entry["id"]]
        assert (f.name, f.category, f.match_name) == (info["name"], info["category"], info["matchName"])
        described = [(p.name, p.kind, p.minimum, p.display_maximum, p.default) for p in f.parameters]
        assert described == [(p["name"], p["kind"], p["minimum"], p["displayMaximum"], p["default"]) for p in info["parameters"]]
    assert [f.name for f in vireo.filters() if f.dtypes != ("uint8",)] == ["Horizontal Flip"]
    assert {"vhs", "sepia"} <= {preset.name for preset in vireo.presets()}


def test_a_notebook_shows_every_filter():
    html = vireo.filters()._repr_html_()
    assert html.count('src="data:image/jpeg;base64,') == html.count("<tr>") - 1 == 22
    assert "Black &amp; White" in html


def test_older_pythons_and_type_checkers_read_it():
    for source in PACKAGE.glob("*.py"):
        ast.parse(source.read_text(), feature_version=(3, 9))
    checked = subprocess.run(["/usr/bin/mypy", "--strict", "--python-version", "3.9", PACKAGE],
                             capture_output=True, text=True)
    assert checked.returncode == 0, checked.stdout
    # The stubs name what the module has.
    stubs = (PACKAGE / "_engine.pyi").read_text()
    for name in re.findall(r"^(?:class|def) (\w+)", stubs, flags=re.MULTILINE):
        assert hasattr(vireo._engine, name), name
    for name in re.findall(r"^    def (\w+)", stubs, flags=re.MULTILINE):
        assert name == "__init__" or any(hasattr(kind, name) for kind in (vireo._engine.Chain, vireo._engine.Stream)), name
