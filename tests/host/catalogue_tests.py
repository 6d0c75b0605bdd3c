# SPDX-License-Identifier: MIT
"""Holds the six catalogues to the keys of the module and of the browser page."""

import re
import sys
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "resources"), str(ROOT / "host/mtkcore")]

import generate
import generate_catalogues

CATALOGUES = sorted((ROOT / "host/mtkcore/languages").glob("*.po"))


def used_keys():
    """Each key of the resources, the sources and the page with its default text."""
    keys = set()
    for kind, _, data in generate.resources():
        if kind != "LOOKUP":
            keys.update(key.decode() for key in re.findall(rb"\$\$\$/[ -~]+", data))
    for folder in ("framework", "filters"):
        for path in (ROOT / folder).rglob("*.[ch]*"):
            keys.update(re.findall(r'"(\$\$\$/[^"]+)"', path.read_text(encoding="utf-8")))
    for entry in generate.read("filters.toml")["filter"]:
        filter = generate.Filter(entry)
        keys.update(filter.key(generate.without(row["label"], " ()"), row["label"])
                    for row in filter.parameters if "label" in row)
    page = (ROOT / "bridges/web/texts.mjs").read_text(encoding="utf-8")
    keys.update(re.findall(r"'(\$\$\$/[^']+)'", page))
    return dict(key.split("=", 1) for key in keys)


@pytest.fixture(params=CATALOGUES, ids=lambda path: path.stem)
def entries(request):
    return generate_catalogues.read_entries(request.param)


def test_six_languages_stand_beside_english():
    assert {path.stem for path in CATALOGUES} == generate_catalogues.PRIMARY_LANGUAGES.keys()


def test_a_catalogue_holds_every_key_with_its_english_text(entries):
    assert {key: english for key, english, _ in entries} == used_keys()


def test_a_translation_keeps_the_words_in_braces(entries):
    for key, english, translation in entries:
        words = [sorted(re.findall(r"\{\w+\}", text)) for text in (english, translation)]
        assert words[0] == words[1], key


def test_file_types_keep_their_patterns(entries):
    key = "$$$/Strata/VireoFilters/Levels/LevelsFilters"
    english, translation = next(texts for name, *texts in entries if name == key)
    assert translation.split("|")[1::2] == english.split("|")[1::2]


def test_no_accelerator_stands_twice_in_a_dialog(entries):
    letters = {}
    for key, _, translation in entries:
        letters.setdefault(key.rsplit("/", 1)[0], []).extend(re.findall(r"&(\w)", translation.upper()))
    assert [found for found in letters.values() if len(set(found)) < len(found)] == []
