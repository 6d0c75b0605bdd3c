# SPDX-License-Identifier: MIT
"""Settings by name, from files and as bytes, and what they do to the picture."""
import json

import numpy
import pytest

from conftest import read_picture

LOOK = ('{"vireo": 1, "filters": [{"filter": "Color Replace", "parameters": {"Similarity": 20, '
        '"Target Color": "#ff0000", "Solid Colors": true}, "mix": "50%"}]}')


def render(vireo, *arguments):
    vireo("render", "in.png", "out.png", "--overwrite", *arguments)
    return read_picture(vireo.folder / "out.png")[..., :3].astype(int)


def test_mix_lays_the_result_over_the_source(vireo, picture, pixels):
    full = render(vireo, "-f", "Horizontal Flip")
    assert (full == pixels[:, ::-1]).all()
    mixed = render(vireo, "-f", "Horizontal Flip:mix=25%")
    assert (mixed == (pixels.astype(int) * 75 + full * 25 + 50) // 100).all()
    assert (render(vireo, "-f", "Horizontal Flip:from=1f") == pixels).all()
    assert (render(vireo, "-f", " color bal : red = 0 ") == pixels * numpy.array([0, 1, 1])).all()


def test_vuya_is_a_format_of_the_filter_alone(vireo, picture):
    bgra, vuya = (render(vireo, "-f", "Black & White", "--filter-format", code) for code in ("bgra", "vuya"))
    assert abs(bgra - vuya).max() <= 2 and (vuya[..., 0] == vuya[..., 1]).all()


def test_loaded_settings_are_saved_with_the_same_bytes(vireo, picture):
    look = vireo.folder / "look.json"
    look.write_text(LOOK)
    by_name = render(vireo, "-f", "Color Replace:similarity=20,target=#ff0000,solid=on,mix=50%")
    assert (render(vireo, "--settings", "look.json", "--save-settings", "saved.json") == by_name).all()
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


def test_settings_are_saved_when_the_render_is_done(vireo, picture):
    save = ["-f", "Solarize", "--save-settings", "a.json", "--save-settings-bytes", "a.bin"]
    vireo.error("render", "missing.png", "out.png", *save, status=1)
    (vireo.folder / "a.bin").touch(exist_ok=False)
    assert "a.bin exists already" in vireo.error("render", "in.png", "out.png", *save, status=1)
    assert sorted(path.name for path in vireo.folder.iterdir()) == ["a.bin", "in.png"]


def test_levels_files_mean_levels(vireo, picture):
    values = [10, 240, 0, 255, 120] + 3 * [0, 255, 0, 255, 100]
    record = b"".join(value.to_bytes(2, "little") for value in values)
    (vireo.folder / "warm.lvl").write_bytes(b"L\0V\0" + record)
    (vireo.folder / "levels.bin").write_bytes(record)
    by_name = render(vireo, "-f", "Levels:rgb black in=10,rgbwhitein=240,rgbgamma=120")
    for arguments in (["--lvl", "warm.lvl"], ["-f", "Levels", "--lvl", "warm.lvl"],
                      *(["-f", "Levels", "--settings-bytes", bytes] for bytes in ("levels.bin", "hex:" + record.hex()))):
        assert (render(vireo, *arguments) == by_name).all(), arguments
    vireo("render", "--lvl", "warm.lvl", "--save-settings-bytes", "out.bin", "--save-settings", "out.json")
    assert (vireo.folder / "out.bin").read_bytes() == record
    assert (render(vireo, "--settings", "out.json") == by_name).all()

    assert "belongs to Levels" in vireo.error("render", "in.png", "x.png", "-f", "Bend", "--lvl", "warm.lvl")
    (vireo.folder / "short.lvl").write_bytes(b"L\0V\0" + record[:39])
    assert "short.lvl ends after 39" in vireo.error("render", "in.png", "x.png", "--lvl", "short.lvl", status=1)
    (vireo.folder / "look.json").write_text(LOOK.replace("20", "200"))
    assert ("look.json at filters[0].parameters.Similarity: Similarity of Color Replace takes"
            in vireo.error("render", "in.png", "x.png", "--settings", "look.json", status=1))


def test_settings_bytes_belong_to_the_filter_before_them(vireo):
    vireo("render", "-f", "Solarize", "--settings-bytes", "hex:0700", "-f", "Replicate:count=3",
          "--save-settings-bytes", "replicate.bin", "--save-settings", "chain.json")
    assert (vireo.folder / "replicate.bin").read_bytes() == b"\3\0"
    assert json.loads((vireo.folder / "chain.json").read_text())["filters"] == [
        {"filter": "Solarize", "parameters": {"Threshold": 7}},
        {"filter": "Replicate", "parameters": {"Count": 3}}]
