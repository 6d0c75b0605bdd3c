# SPDX-License-Identifier: MIT
"""What Kdenlive and Shotcut find of an installation, and vireo-editors, which takes it to where they look."""
import json
import pathlib
import re
import shutil
import sys
from xml.etree import ElementTree

import pytest

from conftest import BARE, only, run

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "bridges/frei0r"))
from hosts import Effect

GROUPS = """<data><group list="invert,vireo.gone,sepia"><text>Color and Image correction</text></group>
<group list="freeze"><text>Motion</text></group><group list="audio"><text>Channels</text></group></data>"""


def services(installation):
    names = (path.stem.removeprefix("filter_") for path in only(installation, "share/mlt*/vireo").glob("filter_*.yml"))
    return {"vireo." + name for name in names if "_" not in name and name != "vireo"}


def test_kdenlive_gets_a_description_of_every_plugin(installation):
    folder = installation / "share/kdenlive/effects"
    plugins = {path.stem for path in only(installation, "**/frei0r-1").glob("vireo_*.so")}
    assert {path.stem for path in folder.glob("vireo_*.xml") if "_mlt_" not in path.name} == plugins
    for plugin in plugins:
        effect = ElementTree.parse(folder / f"{plugin}.xml").getroot()
        assert effect.get("tag") == effect.get("id") == f"frei0r.{plugin}"
        parameters = Effect(effect.find("name").text.removeprefix("Vireo ").removesuffix(" (frei0r)")).info["parameters"]
        entries = list(effect.iter("parameter"))
        assert [entry.get("name") for entry in entries][:len(parameters)] == [parameter["name"] for parameter in parameters]
        for parameter, entry in zip(parameters, entries):
            span, kind = parameter["maximum"] - parameter["minimum"], entry.get("type")
            if kind == "list":
                values = entry.get("paramlist").split(";")
                assert len(values) == len(entry.find("paramlistdisplay").text.split(","))
                assert [round(float(value) * span) for value in values] == list(range(span + 1))
            elif kind == "animated":
                # What Kdenlive hands over at the ends.
                assert [float(entry.get(end)) / float(entry.get("factor")) for end in ("min", "max")] == [0, 1]
            if kind in ("list", "animated"):
                start = float(entry.get("default")) * span
                assert round(start) == parameter["default"] - parameter["minimum"]
                # Kdenlive cuts off what stands behind the point.
                assert kind == "list" or int(start) == round(start)
            else:
                assert (kind, parameter["kind"]) in {("bool", "boolean"), ("color", "colour")}


def start(parameter):
    """As Kdenlive writes it."""
    if parameter["kind"] == "colour":
        return f"0x{parameter['default'].lstrip('#')}ff"
    return str(int(parameter["default"]))


def test_kdenlive_gets_the_services_with_their_ranges_in_every_language(installation):
    effects = installation / "share/kdenlive/effects"
    known = services(installation)
    assert len(known) == 22
    described = {}
    for path in effects.glob("vireo_mlt_*.xml"):
        effect = ElementTree.parse(path).getroot()
        described[effect.get("tag")] = effect
        parameters = Effect(effect.find("name").text.removeprefix("Vireo ")).info["parameters"]
        *entries, mix = effect.iter("parameter")
        assert (mix.get("name"), mix.get("min"), mix.get("max"), mix.get("default")) == ("mix", "0", "100", "100")
        assert [entry.get("name") for entry in entries] == [parameter["name"] for parameter in parameters]
        for parameter, entry in zip(parameters, entries):
            assert entry.get("default") == start(parameter)
            numbers = range(int(parameter["minimum"]), int(parameter["maximum"]) + 1)
            if entry.get("type") == "list":
                assert entry.get("paramlist").split(";") == [str(number) for number in numbers]
            elif entry.get("type") == "animated":
                assert [entry.get("min"), entry.get("max")] == [str(numbers[0]), str(numbers[-1])]
        for language in ("de", "es", "fr", "it", "ja", "ko"):
            translated = ElementTree.parse(installation / "share/vireo/editors/kdenlive" / language / path.name).getroot()
            assert [entry.attrib for entry in translated.iter("parameter")] == [
                entry.attrib for entry in effect.iter("parameter")]
    assert described.keys() == known


def test_kdenlive_gets_the_filters_in_its_groups_and_loses_them_again(installation, tmp_path):
    (tmp_path / "system/kdenlive").mkdir(parents=True)
    (tmp_path / "system/kdenlive/kdenliveeffectscategory.rc").write_text(GROUPS)
    user = tmp_path / "user"
    editors = installation / "bin/vireo-editors"
    environment = {**BARE, "XDG_DATA_DIRS": str(tmp_path / "system"), "LC_ALL": "de_DE.UTF-8"}

    def groups():
        tree = ElementTree.parse(user / "kdenliveeffectscategory.rc").getroot()
        return {group.findtext("text"): group.get("list").split(",") for group in tree.iter("group")}

    for _ in range(2):  # doing it again changes nothing
        run(editors, "kdenlive", "--to", user, environment=environment)
        assert groups()["Motion"] == ["freeze", "vireo.ghosting", "vireo.horizontal-hold", "vireo.vertical-hold"]
        assert groups()["Color and Image correction"][:3] == ["invert", "sepia", "vireo.black-and-white"]
        assert groups()["Channels"] == ["audio"]
    levels = ElementTree.parse(user / "effects/vireo_mlt_levels.xml").getroot()
    assert levels.findtext("name") == "Vireo Tonwertkorrektur"
    assert ElementTree.parse(user / "effects/vireo_levels.xml").getroot().get("type") == "hidden"
    run(editors, "kdenlive", "--remove", "--to", user, environment=environment)
    assert groups()["Motion"] == ["freeze"] and not list((user / "effects").iterdir())


def test_shotcut_gets_a_panel_for_every_service(installation):
    folder = installation / "share/shotcut/qml/filters/vireo"
    seen = set()
    for meta in folder.glob("meta_*.qml"):
        text = meta.read_text()
        service, panel, icon = (re.search(f"{key}: '(.+)'", text).group(1) for key in ("mlt_service", "qml", "icon"))
        assert (folder / icon).stat().st_size > 500
        seen.add(service)
        controls = (folder / panel).read_text()
        parameters = Effect(service.removeprefix("vireo.").replace("-", " ").replace("black and", "black &")).info["parameters"]
        shown = re.findall(r"property: (\".*?\"), .*initial: (.*)}", controls)
        assert [(json.loads(name), json.loads(value)) for name, value in shown] == [
            (parameter["name"], parameter["default"]) for parameter in parameters] + [("mix", 100)]
        keyed = [json.loads(name) for name in re.findall(r"property: (\".*\")", text)]
        assert keyed == [json.loads(name) for name in re.findall(r"kind: 'Number'.*?property: (\".*?\"), ", controls)]
    assert seen == services(installation)


def test_a_shotcut_with_libraries_of_its_own_gets_the_filters(installation, tmp_path):
    shotcut = tmp_path / "Shotcut.app"
    for folder in ("lib/mlt", "share/mlt", "share/shotcut/qml/filters"):
        (shotcut / folder).mkdir(parents=True)
    modules = only(installation, "lib/**/libmltvireo.so").parent.relative_to(installation)
    for name in ("libmltcore.so", "libmltxml.so"):
        shutil.copy(pathlib.Path("/usr") / modules / name, shotcut / "lib/mlt")
    editors = installation / "bin/vireo-editors"
    before = sorted(shotcut.rglob("*"))
    run(editors, "shotcut", shotcut, environment=BARE)
    environment = {**BARE, "LD_LIBRARY_PATH": str(shotcut / "lib"), "MLT_REPOSITORY": str(shotcut / "lib/mlt"),
                   "MLT_DATA": str(shotcut / "share/mlt")}
    assert "Solarize" in run("melt", "-query", "filter=vireo.solarize", environment=environment)
    assert "vireo.solarize" in run("melt", "-silent", "color:red", "out=1", "-filter", "vireo.solarize", "-consumer",
                                   "xml", environment=environment)
    run(editors, "shotcut", "--remove", shotcut, environment=BARE)
    assert [path for path in sorted(shotcut.rglob("*")) if not path.match("lib/vireo")] == before
