# SPDX-License-Identifier: MIT
"""Settings by name, from files and as bytes, and what they do to the picture."""
import json

import numpy
import pytest

from conftest import read_picture

LOOK = ('{"vireo": 1, "filters": [{"filter": "Color Replace", "parameters": {"Similarity": 20, '
        '"Target Color": "#ff0000", "Solid Colors": true}, "mix": "50%"}]}')


def solarized(pixels, threshold):
    """Blue and red trade their weights, as the filter's old projects rely on."""
    weights = [numpy.trunc(numpy.arange(256) * weight).astype(int) for weight in (0.299, 0.587, 0.114)]
    luma = sum(weights[i][pixels[..., channel]] for i, channel in enumerate((2, 1, 0)))
    dark = numpy.maximum(threshold - pixels.astype(int), 0)
    return numpy.where((luma < threshold)[..., None], dark, pixels)


def render(vireo, *arguments):
    vireo("render", "in.png", "out.png", "--overwrite", *arguments)
    return read_picture(vireo.folder / "out.png")[..., :3].astype(int)


def test_parameters_reach_the_filter(vireo, picture, pixels):
    result = render(vireo, "-f", " sol : thr = 100 ")
    assert (result == solarized(pixels, 100)).all()
    per_cent = render(vireo, "-f", "Solarize:threshold=40%")
    assert (per_cent == solarized(pixels, 102)).all()  # 101.6, rounded


def test_defaults_are_those_of_init_settings(vireo, picture):
    assert (render(vireo, "-f", "Solarize") == render(vireo, "-f", "Solarize:threshold=128")).all()


def test_mix_lays_the_result_over_the_source(vireo, picture, pixels):
    full = render(vireo, "-f", "Horizontal Flip")
    assert (full == pixels[:, ::-1]).all()
    mixed = render(vireo, "-f", "Horizontal Flip:mix=25%")
    assert (mixed == (pixels.astype(int) * 75 + full * 25 + 50) // 100).all()
    assert (render(vireo, "-f", "Horizontal Flip:from=1f") == pixels).all()


def test_filters_run_in_order(vireo, picture, pixels):
    threshold = "Solarize:threshold=254"
    once, reverse = (render(vireo, *arguments) for arguments in (
        ["-f", "Levels:rgb white in=100", "-f", threshold], ["-f", threshold, "-f", "Levels:rgb white in=100"]))
    assert (once != reverse).any()
    assert (render(vireo, "-f", "Horizontal Flip", "-f", "Horizontal Flip") == pixels).all()


def test_vuya_is_a_format_of_the_filter_alone(vireo, picture):
    bgra, vuya = (render(vireo, "-f", "Black & White", "--filter-format", code) for code in ("bgra", "vuya"))
    assert abs(bgra - vuya).max() <= 2 and (vuya[..., 0] == vuya[..., 1]).all()


def test_loaded_settings_are_saved_with_the_same_bytes(vireo, picture):
    look = vireo.folder / "look.json"
    look.write_text(LOOK)
    by_name = render(vireo, "-f", "Color Replace:similarity=20,target=#f00000,solid=on,mix=50%")
    assert (render(vireo, "-f", "Color Replace:similarity=20,target=#ff0000,solid=on,mix=50%")
            == render(vireo, "--settings", "look.json", "--save-settings", "saved.json")).all()
    assert by_name.shape == (48, 64, 3)
    vireo("render", "--settings", "saved.json", "--save-settings", "again.json")
    assert (vireo.folder / "saved.json").read_text() == LOOK == (vireo.folder / "again.json").read_text()

    # One -f takes the file's settings and keeps its own.
    vireo("render", "-f", "color rep:similarity=3", "--settings", "look.json", "--save-settings", "mine.json")
    entry = json.loads((vireo.folder / "mine.json").read_text())["filters"][0]
    assert entry["parameters"] == {"Similarity": 3, "Target Color": "#ff0000", "Solid Colors": True}
    assert entry["mix"] == "50%"
    assert "sets Color Replace and not Levels" in vireo.error(
        "render", "in.png", "x.png", "-f", "Levels", "--settings", "look.json")
    assert "mine.json exists already" in vireo.error(
        "render", "--settings", "look.json", "--save-settings", "mine.json", status=1)


def test_settings_written_from_names_read_the_same(vireo):
    chain = ["-f", "Solarize:threshold=0@0s..hold..254@5s,to=9s", "-f", "Color Pass:similarity=100%,color=teal", "-f", "Ghosting"]
    vireo("render", *chain, "--save-settings", "a.json")
    document = json.loads((vireo.folder / "a.json").read_text())
    assert document == {"vireo": 1, "filters": [
        {"filter": "Solarize", "parameters": {"Threshold": "0@0s..hold..254@5s"}, "to": "9s"},
        {"filter": "Color Pass", "parameters": {"Similarity": 127, "Color": "#008080"}},
        {"filter": "Ghosting"}]}


def test_settings_are_saved_when_the_render_is_done(vireo, picture):
    save = ["-f", "Solarize", "--save-settings", "a.json", "--save-settings-bytes", "a.bin"]
    vireo.error("render", "missing.png", "out.png", *save, status=1)
    assert [path.name for path in vireo.folder.iterdir()] == ["in.png"]
    (vireo.folder / "a.bin").write_bytes(b"mine")
    assert "a.bin exists already" in vireo.error("render", "in.png", "out.png", *save, status=1)
    assert sorted(path.name for path in vireo.folder.iterdir()) == ["a.bin", "in.png"]


@pytest.mark.parametrize("text, place", [
    ('{"vireo": 2, "filters": []}', "look.json at vireo: is version 2"),
    ('{"vireo": 1,\n "filters": [}', "look.json: is no valid JSON at line 2, column 14"),
    (LOOK.replace("20", "200"), "look.json at filters[0].parameters.Similarity: Similarity of Color Replace takes"),
    (LOOK.replace("Color Replace", "Colour"), 'look.json at filters[0].filter: there is no filter "Colour"'),
])
def test_damaged_settings_name_file_and_place(vireo, picture, text, place):
    (vireo.folder / "look.json").write_text(text)
    assert place in vireo.error("render", "in.png", "out.png", "--settings", "look.json", status=1)


def test_levels_files_mean_levels(vireo, picture):
    values = [10, 240, 0, 255, 120] + 3 * [0, 255, 0, 255, 100]
    record = b"".join(value.to_bytes(2, "little") for value in values)
    (vireo.folder / "warm.lvl").write_bytes(b"L\0V\0" + record)
    (vireo.folder / "levels.bin").write_bytes(record)
    by_name = render(vireo, "-f", "Levels:rgb black in=10,rgbwhitein=240,rgbgamma=120")
    for arguments in (["--lvl", "warm.lvl"], ["-f", "Levels", "--lvl", "warm.lvl"],
                      ["-f", "Levels", "--settings-bytes", "levels.bin"],
                      ["-f", "Levels", "--settings-bytes", "hex:" + record.hex()]):
        assert (render(vireo, *arguments) == by_name).all(), arguments
    vireo("render", "--lvl", "warm.lvl", "--save-settings-bytes", "out.bin", "--save-settings", "out.json")
    assert (vireo.folder / "out.bin").read_bytes() == record
    assert (render(vireo, "--settings", "out.json") == by_name).all()

    assert "belongs to Levels" in vireo.error("render", "in.png", "x.png", "-f", "Bend", "--lvl", "warm.lvl")
    (vireo.folder / "short.lvl").write_bytes(b"L\0V\0" + record[:39])
    assert "short.lvl" in vireo.error("render", "in.png", "x.png", "--lvl", "short.lvl", status=1)
    (vireo.folder / "wrong.lvl").write_bytes(b"LVL\0" + record)
    assert "is no Levels file" in vireo.error("render", "in.png", "x.png", "--lvl", "wrong.lvl", status=1)


def test_settings_bytes_belong_to_the_filter_before_them(vireo):
    vireo("render", "-f", "Solarize", "--settings-bytes", "hex:0700", "-f", "Replicate:count=3",
          "--save-settings-bytes", "replicate.bin", "--save-settings", "chain.json")
    assert (vireo.folder / "replicate.bin").read_bytes() == b"\3\0"
    assert json.loads((vireo.folder / "chain.json").read_text())["filters"] == [
        {"filter": "Solarize", "parameters": {"Threshold": 7}},
        {"filter": "Replicate", "parameters": {"Count": 3}}]


def test_every_filter_keeps_its_defaults_through_bytes_and_names(vireo):
    for entry in json.loads(vireo("list", "--json").stdout):
        if entry["parameters"] == 0:
            continue
        name = entry["matchName"]
        vireo("render", "-f", name, "--save-settings-bytes", "a.bin", "--overwrite")
        vireo("render", "-f", name, "--settings-bytes", "a.bin", "--save-settings", "a.json", "--overwrite")
        vireo("render", "--settings", "a.json", "--save-settings-bytes", "b.bin", "--overwrite")
        assert (vireo.folder / "a.bin").read_bytes() == (vireo.folder / "b.bin").read_bytes(), name
        [saved] = json.loads((vireo.folder / "a.json").read_text())["filters"]
        assert len(saved["parameters"]) == entry["parameters"]
