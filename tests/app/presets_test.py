# SPDX-License-Identifier: MIT
"""Presets: those that come with the program, and the user's own."""
import json

import pytest

from conftest import ROOT, read_picture

SHIPPED = ROOT / "engine/presets"


def presets(vireo, **options):
    return {entry["name"]: entry for entry in json.loads(vireo("presets", "--json", **options).stdout)}


def test_every_preset_is_listed_and_renders(vireo, picture, pixels):
    listed = presets(vireo, environment={"XDG_CONFIG_HOME": str(vireo.folder)})
    assert sorted(listed) == sorted(path.stem for path in SHIPPED.glob("*.json"))
    results = {}
    for name, entry in listed.items():
        assert entry["description"].endswith("."), name
        assert len(f"{name:16}{entry['description']}") < 90, name
        vireo("render", "in.png", "out.png", "--overwrite", "--preset", name, "--save-settings", "saved.json")
        result = read_picture(vireo.folder / "out.png")
        assert result.shape == pixels.shape, f"{name} makes pixels transparent"
        assert (result != pixels).any(), name
        results[result.tobytes()] = name
        assert (vireo.folder / "saved.json").read_bytes() == (SHIPPED / f"{name}.json").read_bytes(), name
    assert len(results) == len(listed)


@pytest.mark.parametrize("folder, environment", [
    ("config", {"XDG_CONFIG_HOME": "{0}/config"}), ("home/.config", {"XDG_CONFIG_HOME": "", "HOME": "{0}/home"})])
def test_own_presets_go_first_and_names_may_be_cut(vireo, picture, folder, environment):
    environment = {name: value.format(vireo.folder) for name, value in environment.items()}
    own = vireo.folder / folder / "vireo/presets"
    own.mkdir(parents=True)
    for name, filter_name in (("Upside Down", "Vertical Flip"), ("VHS", "Horizontal Flip")):
        (own / f"{name}.json").write_text('{"vireo": 1, "filters": [{"filter": "%s"}]}' % filter_name)
    (own / "broken.json").write_text("{")
    assert b"broken.json" in vireo("presets", environment=environment).stderr
    listed = presets(vireo, environment=environment)
    assert "vhs" not in listed and listed["VHS"]["description"] == "" and listed["VHS"]["file"] == str(own / "VHS.json")
    # A preset stands in its place among the filters.
    vireo("render", "in.png", "out.png", "-f", "Solarize", "--preset", "upsided", "--preset", "vhs",
          "--save-settings", "chain.json", environment=environment)
    vireo("render", "in.png", "byname.png", "-f", "Solarize", "-f", "Vertical Flip", "-f", "Horizontal Flip")
    assert (read_picture(vireo.folder / "out.png") == read_picture(vireo.folder / "byname.png")).all()
    saved = json.loads((vireo.folder / "chain.json").read_text())["filters"]
    assert [entry["filter"] for entry in saved] == ["Solarize", "Vertical Flip", "Horizontal Flip"]


def test_wrong_presets_are_named(vireo, picture):
    render = "render", "in.png", "out.png"
    assert 'the preset "c" may be cross-process or cyanotype' in vireo.error(*render, "--preset", "c")
    assert 'there is no preset "vsh"; the nearest are vhs' in vireo.error(*render, "--preset", "vsh")
    assert "two chains" in vireo.error(*render, "--preset", "vhs", "--settings", str(SHIPPED / "vhs.json"))
