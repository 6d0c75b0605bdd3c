# SPDX-License-Identifier: MIT
"""Every link of every Markdown file leads somewhere, headings included, on a forge as in a built site."""
import pathlib
import re

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SKIPPED = {"build", "demo-output", "node_modules", ".git"}
PAGES = sorted(page for page in ROOT.rglob("*.md") if not SKIPPED & set(page.relative_to(ROOT).parts))

LINK = re.compile(r"\[(?:[^\[\]]|\[[^\]]*\])*\]\(([^()\s]+)\)|(?:href|src)=\"([^\"]+)\"")


def without_blocks(page):
    return re.sub(r"^```.*?^```", "", page.read_text(encoding="utf-8"), flags=re.MULTILINE | re.DOTALL)


def links(page):
    """What the page leads to, but for the web: each link, its target and its anchor."""
    for match in LINK.finditer(re.sub(r"`[^`\n]*`", "", without_blocks(page))):
        link = match[1] or match[2]
        path, _, anchor = link.partition("#")
        if not re.match(r"[a-z]+:", link):
            yield link, (page.parent / path).resolve() if path else page, anchor


def anchors(page):
    """What forges call the headings."""
    for heading in re.findall(r"^#+ (.+)$", without_blocks(page), flags=re.MULTILINE):
        yield re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


def broken(page):
    for link, target, anchor in links(page):
        if not target.is_relative_to(ROOT) or not target.exists():
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
    reached, pages = set(), {ROOT / "docs/README.md"}
    while pages:
        reached |= pages
        found = {target / "README.md" if target.is_dir() else target for page in pages for _, target, _ in links(page)}
        pages = {page for page in found if page.suffix == ".md" and page.exists()} - reached
    assert {page for page in PAGES if page.is_relative_to(ROOT / "docs")} <= reached
