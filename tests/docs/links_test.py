# SPDX-License-Identifier: MIT
"""Every link of every Markdown file leads somewhere, headings included, on a forge as in a built site."""
import pathlib
import re

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SKIPPED = {"build", "demo-output", "node_modules", ".git"}
PAGES = sorted(page for page in ROOT.rglob("*.md") if not SKIPPED & set(page.relative_to(ROOT).parts))

LINK = re.compile(r"\[(?:[^\[\]]|\[[^\]]*\])*\]\(([^()\s]+)\)|(?:href|src)=\"([^\"]+)\"")


def prose(page):
    """The text without blocks and spans of code."""
    text = re.sub(r"^```.*?^```", "", page.read_text(encoding="utf-8"), flags=re.MULTILINE | re.DOTALL)
    return re.sub(r"`[^`\n]*`", "", text)


def anchors(page):
    """What forges call the headings."""
    text = re.sub(r"^```.*?^```", "", page.read_text(encoding="utf-8"), flags=re.MULTILINE | re.DOTALL)
    for heading in re.findall(r"^#+ (.+)$", text, flags=re.MULTILINE):
        yield re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


def broken(page):
    for match in LINK.finditer(prose(page)):
        link = match[1] or match[2]
        if re.match(r"[a-z]+:", link):
            continue
        path, _, anchor = link.partition("#")
        target = (page.parent / path).resolve() if path else page
        if path.startswith("/") or not target.is_relative_to(ROOT) or not target.exists():
            yield f"{link}: no such file"
        elif target.is_dir() and not (target / "README.md").exists():
            yield f"{link}: a folder without a page"
        elif anchor and target.suffix == ".md" and anchor not in anchors(target):
            yield f"{link}: no such heading"


ids = pytest.mark.parametrize("page", PAGES, ids=lambda page: str(page.relative_to(ROOT)))


@ids
def test_links_lead_somewhere(page):
    assert list(broken(page)) == []


@ids
def test_files_that_are_named_exist(page):
    """In spans of code; NAME, … and the filter that docs/adding-a-filter.md makes stand for something else."""
    folders = {folder.name for folder in ROOT.iterdir() if folder.is_dir()} - SKIPPED
    for span in re.findall(r"`([^`\n ]+/[^`\n ]*)`", page.read_text(encoding="utf-8")):
        if span.split("/")[0] in folders and not re.search("[A-Z]{4}|…|posterize", span):
            assert list(ROOT.glob(span.rstrip("/"))), span


def test_every_page_of_the_documentation_is_reached_from_its_index():
    index, reached = ROOT / "docs/README.md", set()
    pages = [index]
    while pages:
        page = pages.pop()
        if page in reached:
            continue
        reached.add(page)
        for match in LINK.finditer(prose(page)):
            target = (page.parent / (match[1] or match[2]).partition("#")[0]).resolve()
            target = target / "README.md" if target.is_dir() else target
            if target.suffix == ".md" and target.exists():
                pages.append(target)
    assert {page for page in PAGES if page.is_relative_to(ROOT / "docs")} - reached == set()
