# SPDX-License-Identifier: MIT
"""Commands, statuses and words."""
import io
import json
import os
import re
import shlex
import subprocess

import numpy
import pytest
from PIL import Image

from conftest import PROGRAM, read_picture

FILTERS = 22


def test_list_names_every_filter(vireo):
    lines = [" ".join(line.split()) for line in vireo("list").stdout.decode().splitlines()]
    filters = json.loads(vireo("list", "--json").stdout)
    assert len(filters) == FILTERS
    for entry in filters:
        assert list(entry) == ["id", "name", "category", "matchName", "parameters"]
        assert "{id} {name} {category} {parameters} {matchName}".format(**entry) in lines
    assert {"id": 10035, "name": "Levels", "category": "Adjust", "matchName": "QULN Levels", "parameters": 20} in filters


def test_application_type_decides_what_the_module_offers(vireo):
    for arguments in (["--application-type", "1", "list", "--json"], ["list", "--json", "--application-type=1"]):
        assert len(json.loads(vireo(*arguments).stdout)) == FILTERS - 3
    assert "no filter \"Levels\"" in vireo.error("info", "Levels", "--application-type", "1")


def test_info_tells_ranges_and_defaults(vireo):
    description = json.loads(vireo("info", "color rep", "--json").stdout)
    assert (description["id"], description["name"]) == (10016, "Color Replace")
    parameters = {parameter["name"]: parameter for parameter in description["parameters"]}
    assert parameters["Similarity"] == {"name": "Similarity", "kind": "number", "minimum": 0, "maximum": 127, "displayMinimum": 0,
                                        "displayMaximum": 100, "default": 10, "size": 2}
    assert [parameters[name]["default"] for name in ("Solid Colors", "Target Color")] == [False, "#ff0000"]
    assert re.search(rb"Threshold +number +0 to 254 +0 to 100 +128\n", vireo("info", "10049").stdout)
    assert b"No parameters" in vireo("info", "verticalflip").stdout


def test_names_may_be_those_of_a_language(vireo):
    # The words of English scripts go before those of the language.
    for value in ("Solarize:threshold=7", "Solarisation:seuil=7"):
        vireo("render", "--language", "fr", "-f", value, "--save-settings", f"{value[:8]}.json")
    assert (vireo.folder / "Solarize.json").read_bytes() == (vireo.folder / "Solarisa.json").read_bytes()
    vireo.error("render", "--save-settings", "2.json", "-f", value)


def test_version_names_what_a_report_needs(vireo):
    output = vireo("--version", environment={"VIREO_ISA": "baseline"}).stdout.decode()
    commit = r"([0-9a-f]{12}(-modified)?|unknown)"
    module = re.escape(str(PROGRAM.with_name("VireoFiltersMetaPlugin.vrmp")))
    assert re.fullmatch(rf"vireo \d+\.\d+\.\d+, commit {commit}, instruction set baseline\nmodule {module}\nsandbox [a-z ]+\n", output)
    assert b"\nmodule other.vrmp\n" in vireo("--version", "--module", "other.vrmp").stdout


def test_help_goes_to_standard_output_and_fits(vireo):
    program = vireo("--help").stdout.decode()
    commands = re.findall(r"^  (\w+) ", program.split("Commands:\n")[1].split("\n\n")[0], re.MULTILINE)
    assert {"list", "info", "render", "compare", "presets", "sheet", "settings"} <= set(commands)
    for command in [[], *([name] for name in commands)]:
        completed = vireo(*command, "--help")
        text = completed.stdout.decode()
        assert "Usage: vireo" in text and "\n  vireo " in text, command
        assert max(map(len, text.splitlines())) <= 100, command
        assert completed.stderr == b"" and "\033" not in text
    for example in re.findall(r"^  vireo [^|<*]*?(?=   |$)", program, re.MULTILINE):
        assert example.split()[1] in [*commands, "COMMAND"]


def in_terminal(vireo, *arguments, **environment):
    """What the program writes to a terminal."""
    command = ["script", "--quiet", "--return", "--command", shlex.join([str(PROGRAM), *arguments]), "/dev/null"]
    shown = subprocess.run(command, cwd=vireo.folder, stdin=subprocess.DEVNULL, capture_output=True,
                           env={**os.environ, "TERM": "xterm", **environment}).stdout
    return shown.decode().replace("\r\n", "\n")


@pytest.mark.parametrize("arguments", [["--help"], ["list"], ["info", "Levels"], ["presets"], ["nothing"], ["info", "nothing"]])
def test_colours_are_for_terminals_that_show_them(vireo, arguments):
    plain = vireo(*arguments, status=2 if "nothing" in arguments else 0)
    plain = (plain.stdout + plain.stderr).decode()
    coloured = in_terminal(vireo, *arguments)
    assert "\033[" not in plain and "\033[" in coloured
    assert re.sub(r"\033\[[0-9;]*m", "", coloured) == plain
    assert in_terminal(vireo, *arguments, NO_COLOR="1") == in_terminal(vireo, *arguments, TERM="dumb") == plain


@pytest.mark.parametrize("arguments, words", [
    ([], "a command is missing"),
    (["lsit"], "lsit"),
    (["list", "more"], "more"),
    (["list", "--jsn"], "--jsn"),
    (["info"], "filter"),
    (["info", "Solarise"], 'there is no filter "Solarise"; the nearest are Solarize'),
    (["list", "--language", "xx"], "--language takes en, fr, de, ja, es, it or ko"),
    (["render", "in.png", "out.png"], "no filter is given"),
    (["render", "in.png", "-f", "Solarize"], "an input and an output"),
    (["render", "a.png", "b.png", "c.png", "-f", "Solarize"], "--to"),
    (["render", "--to", "out", "-f", "Solarize"], "at least one input"),
    (["render", "a/x.png", "b/x.png", "--to", "out", "-f", "Solarize"], "x.png"),
    (["render", "in.png", "out.png", "-f", "Solarize", "--frames", "5"], "--frames takes A-B"),
    (["render", "in.png", "out.png", "-f", "Solarize", "--frames", "5-4"], "ends before it begins"),
    (["render", "in.png", "out.png", "-f", "Solarize", "--start", "soon"], "--start takes a time"),
    (["render", "in.png", "out.png", "-f", "Solarize", "--frames", "1-2", "--start", "1s"], "--frames"),
    (["render", "in.png", "out.png", "-f", "Solarize", "--interlaced", "both"], "--interlaced"),
    (["render", "in.png", "out.png", "-f", "Solarize", "--interlaced", "tff", "--progressive"], "--progressive"),
    (["render", "in.png", "out.png", "-f", "Solarize", "--jobs", "0"], 'whole numbers from 1 to 1024, not "0"'),
    (["render", "in.png", "out.png", "-f", "Solarize", "--encoder-option", "x"], "NAME=VALUE"),
    (["render", "in.png", "out.png", "-f", "Solarize", "--filter-format", "vuya"], "offers the format vuya"),
    (["render", "in.png", "out.png", "-f", "Horizontal Flip", "--filter-format", "VUya"], "VUya"),
    (["render", "in.png", "out.png", "--settings-bytes", "hex:00", "-f", "Solarize"], "must stand behind"),
    (["render", "in.png", "out.png", "-f", "Solarize", "--settings-bytes", "hex:000102"], "take 2 bytes, not 3"),
    (["render", "in.png", "out.png", "-f", "Solarize", "--settings-bytes", "hex:0g"], "two hexadecimal digits"),
])
def test_wrong_usage_is_one_sentence(vireo, picture, arguments, words):
    assert words in vireo.error(*arguments)
    assert not (vireo.folder / "out.png").exists()


def test_one_bad_input_does_not_stop_the_others(vireo, picture, tmp_path):
    (tmp_path / "bad.png").write_text("no picture")
    Image.new("RGB", (16384, 4)).save(tmp_path / "wide.png")
    said = vireo("render", "bad.png", "wide.png", "in.png", "--to", "filtered/here", "-f", "Vertical Flip", status=1).stderr
    assert b"bad.png" in said and said.count(b"wide.png: Vertical Flip takes rows of up to 32767 bytes") == 1
    assert [path.name for path in (tmp_path / "filtered/here").iterdir()] == ["in.png"]


def test_frames_that_are_too_large_are_refused_but_for_their_fields(vireo, tmp_path):
    Image.new("RGB", (1, 40000)).save(tmp_path / "in.png")
    vireo("render", "in.png", "out.png", "--interlaced", "tff", "-f", "Replicate:count=2")
    assert read_picture(tmp_path / "out.png").shape[0] == 40000
    for command in (("render", "in.png", "out2.png", "-f", "Replicate"), ("sheet", "in.png", "sheet.png")):
        assert "32767 pixels high, not 40000" in vireo.error(*command, status=1)
    assert b"Largest     32767 pixels high, 32767 bytes a row" in vireo("info", "Vertical Flip").stdout


def test_quiet_leaves_only_errors(vireo, picture):
    assert vireo("render", "in.png", "out.png", "-f", "Solarize").stderr != b""
    assert vireo("--quiet", "render", "in.png", "out2.png", "-f", "Solarize").stderr == b""
    assert b"out.png" in vireo("--quiet", "render", "in.png", "out.png", "-f", "Solarize", status=1).stderr


def test_standard_output_takes_one_picture(vireo, picture, pixels):
    written = vireo("render", "-", "-", "-f", "Horizontal Flip", "--format", "png", input=picture.read_bytes()).stdout
    assert (read_picture(io.BytesIO(written))[..., :3] == pixels[:, ::-1]).all()


def test_sheet_shows_the_picture_first(vireo, picture, pixels, tmp_path):
    large = numpy.kron(pixels, numpy.ones((8, 8, 1), numpy.uint8))
    Image.fromarray(large).save(tmp_path / "large.png")
    vireo("sheet", "large.png", "sheet.png")
    sheet = read_picture(tmp_path / "sheet.png")
    assert sheet.shape[:2] == large.shape[:2]
    cell = sheet[: sheet.shape[0] // 5, : sheet.shape[1] // 5, :3].astype(int)
    assert (abs(cell - (255, 255, 0)).max(axis=2) < 8).sum() > 100  # the yellow bar
    assert (cell.min(axis=2) > 200).sum() > 50  # the label
    vireo.error("sheet", "large.png", "sheet.png", status=1)
    vireo("sheet", "large.png", "sheet.png", "--overwrite")
