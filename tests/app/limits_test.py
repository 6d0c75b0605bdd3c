# SPDX-License-Identifier: MIT
"""Pictures as small and as large as there are, through every filter."""
import json

import numpy
import pytest
from PIL import Image

from conftest import read_picture


def save(vireo, name, width, height):
    rows = numpy.random.default_rng(5).integers(0, 256, (height, width, 3), numpy.uint8)
    Image.fromarray(rows).save(vireo.folder / name, compress_level=1)
    return rows


def every_filter(vireo):
    return [entry["name"] for entry in json.loads(vireo("list", "--json").stdout)]


@pytest.mark.parametrize("size, refused", [
    ((1, 1), {}),
    ((8176, 2), {}),
    ((16384, 16), {"Color Replace": "rows of up to 32767 bytes, and those of 16384 pixels have 65536",
                   "Horizontal Hold": "frames up to 8192 pixels wide, not 16384",
                   "Vertical Flip": "rows of up to 32767 bytes, and those of 16384 pixels have 65536"}),
    ((2, 32769), {"Antialias": "frames up to 32767 pixels high, not 32769",
                  "Color Replace": "frames up to 32767 pixels high, not 32769",
                  "Lens Distortion": "frames up to 32768 pixels high, not 32769",
                  "Replicate": "frames up to 32767 pixels high, not 32769",
                  "Vertical Flip": "frames up to 32767 pixels high, not 32769",
                  "Vertical Hold": "frames up to 32768 pixels high, not 32769"}),
])
def test_every_filter_renders_a_size_or_says_why_not(vireo, size, refused):
    save(vireo, "in.png", *size)
    for name in every_filter(vireo):
        arguments = ["render", "in.png", "out.png", "--overwrite", "-f", name]
        if name in refused:
            assert vireo.error(*arguments, status=1) == f"in.png: {name} takes {refused[name]}."
            assert not (vireo.folder / "out.png").exists()
        else:
            vireo(*arguments)
            assert read_picture(vireo.folder / "out.png").shape[:2] == (size[1], size[0])
            (vireo.folder / "out.png").unlink()


def test_a_refused_picture_does_not_stop_the_others(vireo):
    for name, width in (("a.png", 20), ("b.png", 16384), ("c.png", 30)):
        save(vireo, name, width, 4)
    result = vireo("render", "a.png", "b.png", "c.png", "--to", "out", "-f", "Solarize", "-f", "Vertical Flip", status=1)
    assert result.stderr.count(b"b.png: Vertical Flip takes rows of up to 32767 bytes") == 1
    assert sorted(path.name for path in (vireo.folder / "out").iterdir()) == ["a.png", "c.png"]


def test_fields_count_and_not_their_frame(vireo):
    rows = save(vireo, "in.png", 1, 40000)
    vireo("render", "in.png", "out.png", "--interlaced", "tff", "-f", "Replicate:count=2")
    assert read_picture(vireo.folder / "out.png").shape[0] == len(rows)
    assert "32767 pixels high, not 40000" in vireo.error("render", "in.png", "out2.png", "-f", "Replicate", status=1)
    assert "takes" in vireo.error("sheet", "in.png", "sheet.png", status=1)


def test_limits_are_listed(vireo):
    assert b"Largest     32767 pixels high, 32767 bytes a row" in vireo("info", "Vertical Flip").stdout
    assert b"Largest" not in vireo("info", "Solarize").stdout
