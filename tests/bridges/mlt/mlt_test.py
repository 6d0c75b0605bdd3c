# SPDX-License-Identifier: MIT
"""melt renders the native services as `vireo render` does, byte for byte."""
import itertools
import json
import os
import pathlib
import subprocess
import sys

import numpy
import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "frei0r"))
import hosts
from hosts import BUILD, run

VIREO = BUILD / "bin/vireo"
LANGUAGES = {"en", "fr", "de", "ja", "es", "it", "ko"}
FRAMES = 12
ENVIRONMENT = {
    "MLT_REPOSITORY": str(BUILD / "mlt-7"), "MLT_DATA": str(BUILD / "mlt-7/share"), "LANGUAGE": "en",
    # Others only take time to load.
    "MLT_REPOSITORY_DENY": "libmltjackrack:libmltqt:libmltopencv:libmltmovit:libmltsox:libmltglaxnimate:libmltgdk:libmltfrei0r"}
FILTERS = {entry["name"]: json.loads(run(VIREO, "info", "--json", str(entry["id"])))
           for entry in json.loads(run(VIREO, "list", "--json"))}


def service(name):
    return "vireo." + "-".join(name.replace("&", "and").replace("(RGB)", "").split()).lower()


def make_clip(folder, width=62, height=37, pixel_format="bgra", options=(), frames=FRAMES):
    clip = hosts.random_clip(width, height, frames)
    run("ffmpeg", "-v", "error", "-y", *hosts.stored(clip, folder), *options, "-c:v", "ffv1", "-pix_fmt", pixel_format,
        folder / "in.mkv")
    return folder / "in.mkv"


def melt(source, filters, profile=hosts.melt_profile(62, 37), name="melt", consumer=("real_time=-1",)):
    return hosts.melt(source, source.with_name(f"{name}.mkv"), profile, filters, ENVIRONMENT, consumer)


def vireo(source, *filters):
    result = source.with_name("vireo.mkv")
    run(VIREO, "render", source, result, "--overwrite", "--quiet", "--encoder", "ffv1", "--pixel-format", "bgra",
        *[word for chain in filters for word in ("-f", chain)])
    return result


def pixels(path):
    return numpy.frombuffer(run("ffmpeg", "-v", "error", "-i", path, *hosts.RAW, "-"), numpy.uint8)


def assert_same(ours, expected, source=None):
    ours, expected = pixels(ours), pixels(expected)
    assert ours.size == expected.size
    assert numpy.array_equal(ours, expected), f"{numpy.count_nonzero(ours != expected)} bytes of {ours.size} differ"
    if source is not None:
        assert not numpy.array_equal(ours, pixels(source))


def values_of(parameter, index):
    """A constant and an animation, for melt and for vireo."""
    if parameter["kind"] == "boolean":
        value = str(int(not parameter["default"]))
        return (value, value), (value, value)
    if parameter["kind"] == "colour":
        first, last = f"#{(index * 50 + 20) % 256:02x}f010", f"#10{(index * 70) % 256:02x}cc"
        return (f"#40{first[1:]}", first), (f"0={first};9={last}", f"{first}@0f..{last}@9f")
    low, high = parameter["minimum"], parameter["maximum"]
    inner = int(low + (high - low) * (0.3 + 0.13 * (index % 4)))
    return ((str(inner), str(inner)),
            (f"1={inner};5|={high};8={low}", f"{inner}@1f..{high}@5f..hold..{low}@8f"))


@pytest.mark.parametrize("names", [list(FILTERS)[first:first + 2] for first in range(0, len(FILTERS), 2)], ids=" and ".join)
def test_every_filter_takes_constants_and_animations(names, tmp_path):
    source = make_clip(tmp_path)
    filters, chain = [], []
    for name, animated in itertools.product(names, (False, True)):
        parameters = FILTERS[name]["parameters"]
        values = [values_of(parameter, index)[animated] for index, parameter in enumerate(parameters)]
        ours, typed = ([f"{p['name']}={value[door]}" for p, value in zip(parameters, values)] for door in (0, 1))
        mix, mix_typed = ("0=100;10=20", "mix=100@0f..20@10f") if animated else ("70", "mix=70%")
        filters += ["-filter", service(name), *ours, f"mix={mix}"]
        chain.append(f"{name}:{','.join([*typed, mix_typed])}")
    assert_same(melt(source, filters), vireo(source, *chain), source)


CHAIN = "Levels:(rgb) gamma=60@0f..300@11f; Ghosting; Bend:vertical source=2,vertical intensity=30; Lens Distortion:curvature=40"


@pytest.mark.parametrize("width, height, frames, real_times", [(62, 37, 12, (1, -1, -3)), (1279, 719, 4, (-3,))])
def test_threads_make_no_difference(width, height, frames, real_times, tmp_path):
    source = make_clip(tmp_path, width, height, frames=frames)
    expected = vireo(source, *CHAIN.split("; "))
    for real_time in real_times:
        # Above 0 a consumer drops what comes late, unless it must not.
        result = melt(source, ["-filter", "vireo", f"chain={CHAIN}"], hosts.melt_profile(width, height),
                      consumer=[f"real_time={real_time}", "drop_max=0"])
        assert_same(result, expected, source)


@pytest.mark.parametrize("order, top", [("tff", 1), ("bff", 0)])
def test_interlaced_profiles_are_rendered_by_fields(order, top, tmp_path):
    source = make_clip(tmp_path, 64, 48, options=["-vf", f"setfield={order},format=bgra", "-top", top])
    fields = hosts.melt_profile(64, 48, progressive=False)
    chain = ["Convolution Kernel:m11=3,m33=-2,offset=4", "Ghosting", "Vertical Hold"]
    expected = vireo(source, *chain)
    ours = [word for name in ("convolution-kernel", "ghosting", "vertical-hold") for word in ("-filter", f"vireo.{name}")]
    ours[2:2] = ["M11=3", "M33=-2", "Offset=4"]
    # Otherwise MLT moves the fields to the order that the consumer has.
    assert_same(melt(source, ours, fields, consumer=[f"top_field_first={top}"]), expected, source)


@pytest.mark.parametrize("pixel_format", ["yuv422p", "yuv422p10", "yuva420p"])
def test_colours_of_other_formats_are_those_of_mlt(pixel_format, tmp_path):
    source = make_clip(tmp_path, pixel_format=pixel_format)
    plain = melt(source, [], name="plain")
    for name, chain in (("solarize", "Solarize"), ("edge-feather", "Edge Feather"), ("ghosting", "Ghosting")):
        assert_same(melt(source, ["-filter", f"vireo.{name}"]), vireo(plain, chain))


@pytest.mark.parametrize("ours, typed", [
    (["vireo.bend", "Vertical Source=square", "Horizontal Frequency=0|=2;6=1"],
     "Bend:vertical source=3,horizontal frequency=2@0f..hold..1@6f"),
    (["vireo.solarize", "Threshold=40%"], "Solarize:threshold=40%"),
    (["vireo.solarize", "Threshold=99.5"], "Solarize:threshold=100"),
    (["vireo.solarize", "Threshold=300"], "Solarize:threshold=254"),
    (["vireo.solarize", "Threshold=0@0f..smooth..254@9f"], "Solarize:threshold=0@0f..smooth..254@9f"),
    (["vireo.solarize", "Threshold=-1=0;0=254"], "Solarize:threshold=254@0f..0@11f"),
    (["vireo.color-replace", "Similarity=99", "Target Color=0x80828100", "Replace Color=teal", "Solid Colors=on"],
     "Color Replace:similarity=99,target color=#808281,replace color=teal,solid colors=on"),
    (["vireo.bend", "Vertical Intensity=0=5;4=30", "in=4", "out=8"],
     "Bend:vertical intensity=5@4f..30@8f,from=4f,to=9f"),
    (["vireo:Solarize:threshold=0@0f..254@9f; Replicate"], "Solarize:threshold=0@0f..254@9f; Replicate"),
    (["vireo", "preset=noir", "chain=Antialias"], "Black & White; Levels:(rgb) black input level=38,(rgb) white input level=226,(rgb) gamma=92; Antialias"),
    (["vireo", "settings={folder}/look.json"], "Solarize:threshold=60")])
def test_values_are_written_as_both_worlds_write_them(ours, typed, tmp_path):
    source = make_clip(tmp_path)
    look = tmp_path / "look.json"
    look.write_text('{"vireo": 1, "filters": [{"filter": "Solarize", "parameters": {"Threshold": 60}}]}')
    result = melt(source, ["-filter", *[word.format(folder=tmp_path) for word in ours]])
    assert_same(result, vireo(source, *typed.split("; ")), source)


PROJECT = """<mlt>
  <producer id="clip"><property name="resource">{source}</property>
    <filter><property name="mlt_service">vireo.solarize</property><property name="Threshold">0=20;11=230</property></filter>
    <filter><property name="mlt_service">vireo.ghosting</property></filter>
  </producer>
  <playlist id="cuts"><entry producer="clip" in="8" out="11"/><entry producer="clip" in="3" out="5"/></playlist>
  <tractor><track producer="cuts"/></tractor>
</mlt>
"""


@pytest.mark.parametrize("real_time", [-1, -3])
def test_projects_cut_clips_without_a_change_of_their_frames(real_time, tmp_path):
    source = make_clip(tmp_path)
    project = tmp_path / "project.mlt"
    project.write_text(PROJECT.format(source=source))
    result = pixels(melt(project, [], consumer=[f"real_time={real_time}"]))
    whole = pixels(vireo(source, "Solarize:threshold=20@0f..230@11f", "Ghosting")).reshape(FRAMES, -1)
    assert numpy.array_equal(result, whole[[8, 9, 10, 11, 3, 4, 5]].ravel())


@pytest.mark.parametrize("ours, sentence", [
    (["vireo.solarize", "Threshold=often"], "Threshold of Solarize takes whole numbers from 0 to 254"),
    (["vireo", "chain=Solarise"], "Solarise"),
    (["vireo", "preset=none such"], "none such")])
def test_what_is_wrong_is_said_once_and_leaves_the_picture(ours, sentence, tmp_path):
    source = make_clip(tmp_path)
    result = melt(source, ["-filter", *ours])
    assert result.with_suffix(".log").read_text().count(sentence) == 1
    assert_same(result, source)


def test_without_the_filters_module_it_says_so():
    said = subprocess.run(["melt", "-query", "filters"], env={**os.environ, **ENVIRONMENT, "VIREO_MODULE": "/nowhere.vrmp"},
                          capture_output=True, text=True, timeout=60)
    assert "/nowhere.vrmp" in said.stderr and "vireo." not in said.stdout


def described(name, language):
    text = run("melt", "-query", f"filter={name}", environment={**ENVIRONMENT, "LANGUAGE": language}).decode()
    facts, parameters = {}, []
    for line in text.splitlines():
        key, _, value = line.strip().removeprefix("- ").partition(": ")
        if key == "identifier" and "type" in facts and "identifier" in facts:
            parameters.append({})
        if value:
            (parameters[-1] if parameters else facts)[key] = value.strip('"')
    return facts, {parameter["identifier"]: parameter for parameter in parameters}


@pytest.mark.parametrize("name", ["Levels", "Bend", "Lens Distortion", "Color Replace"])
def test_descriptions_tell_what_the_command_line_tells(name):
    facts, parameters = described(service(name), "en")
    assert facts["title"] == f"Vireo {name}" and list(parameters)[-1] == "mix"
    assert list(parameters)[:-1] == [p["name"] for p in FILTERS[name]["parameters"]]
    for expected in FILTERS[name]["parameters"]:
        ours = parameters[expected["name"]]
        if expected["kind"] == "colour":
            assert (ours["type"], ours["default"]) == ("color", expected["default"])
        elif "values" not in ours and ours["type"] == "integer":
            assert [int(ours[key]) for key in ("minimum", "maximum", "default")] == \
                [expected[key] for key in ("minimum", "maximum", "default")]


def test_descriptions_come_in_every_language():
    titles = {language: described("vireo.lens-distortion", language)[0] for language in LANGUAGES}
    assert {language: facts["language"] for language, facts in titles.items()} == {language: language for language in LANGUAGES}
    for language in LANGUAGES:
        name = json.loads(run(VIREO, "info", "--json", "--language", language, "10034"))["name"]
        assert titles[language]["title"] == f"Vireo {name}"
