# SPDX-License-Identifier: MIT
"""What help, completion and lists say of the options that there are."""
import json
import re

import pytest

COMMANDS = ["render", "batch", "compare", "preview", "sheet", "farm plan", "farm join", "list", "info", "presets", "settings",
            "completion", "man"]


def options_of(help_text):
    return re.findall(r"^  (?:-\w, )?(--[\w-]+)", help_text, re.MULTILINE)


@pytest.mark.parametrize("command", ["", *COMMANDS, "farm"])
def test_help_and_completion_name_the_options_of_every_command(vireo, command):
    options = options_of(vireo(*command.split(), "--help").stdout.decode())
    assert {"--quiet", "--language", "--module", "--application-type"} <= set(options)
    offered = {line.split("\t")[0] for line in vireo("complete", f"vireo {command} --").stdout.decode().splitlines()[1:]}
    assert set(options) <= offered


def test_powershell_asks_for_what_the_program_answers(vireo):
    # No PowerShell runs here: the script is held against the query that it makes.
    script = vireo("completion", "powershell").stdout.decode()
    assert "Register-ArgumentCompleter -Native -CommandName vireo" in script and " complete $line " in script
    code = re.sub(r"'[^']*'|\"[^\"]*\"", "", script)
    for opening, closing in ("()", "[]", "{}"):
        assert code.count(opening) == code.count(closing)
    kinds = {vireo("complete", f"vireo render {line}").stdout.decode().splitlines()[0] for line in ("", "--to ", "--")}
    assert kinds == {"files", "folders", "words"}
    assert set(re.findall(r"-in (.*)\) \{", script)) == {"'files', 'folders'"} and "-eq 'files'" in script
    candidates = vireo("complete", 'vireo render --preset cyan').stdout.decode().splitlines()[1:]
    assert [line.split("\t")[0] for line in candidates] == ["cyanotype"] and '-split "`t", 2' in script


def test_lists_name_what_render_takes(vireo, picture):
    encoders = {e["name"]: e for e in json.loads(vireo("list", "--encoders", "--json").stdout)}
    formats = {f["name"]: f for f in json.loads(vireo("list", "--formats", "--json").stdout)}
    pixel_formats = {p["name"]: p for p in json.loads(vireo("list", "--pixel-formats", "--json").stdout)}
    for encoder in encoders.values():
        assert set(encoder["pixelFormats"] or []) <= set(pixel_formats)
    for name, format in formats.items():
        assert {format["encoder"], format["alphaEncoder"]} <= set(encoders), name
    assert pixel_formats["yuva422p10le"] == {"name": "yuva422p10le", "model": "4:2:2", "bits": 10, "alpha": True}
    assert (formats["mov"]["encoder"], formats["mov"]["alphaEncoder"]) == ("libx264", "prores_ks")
    endings = [ending for format in formats.values() for ending in format["endings"]]
    assert len(endings) == len(set(endings)) and {"mkv", "mp4", "jpeg", "y4m"} <= set(endings)
    for ending in ("mkv", "webp", "gif", "mxf"):
        name, format = next((n, f) for n, f in formats.items() if ending in f["endings"])
        extra = ["--encoder-option", "lossless=1"] if ending == "webp" else []
        vireo("render", "in.png", f"out.{ending}", "-f", "Solarize", "--encoder", format["encoder"], *extra)
        vireo("render", "in.png", "-", "-f", "Solarize", "--format", name)
    for flag, first in (("--encoders", "Encoder"), ("--formats", "Format"), ("--pixel-formats", "Pixel format")):
        lines = vireo("list", flag).stdout.decode().splitlines()
        assert lines[0].startswith(first) and len(lines) == 1 + len(json.loads(vireo("list", flag, "--json").stdout))
    assert "excludes" in vireo.error("list", "--formats", "--encoders")
