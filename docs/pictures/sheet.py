#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Lays pictures on a sheet, with their names.

sheet.py SHEET.jpg SOURCE.png           the source and one picture of every filter's page
sheet.py SHEET.jpg SOURCE.png FILE...   the source and these, named as the files are
"""

import pathlib
import sys

from PIL import Image, ImageDraw, ImageFont

ROOT = pathlib.Path(__file__).resolve().parents[2]
COLUMNS, WIDTH, HEIGHT, GAP, LABEL = 6, 210, 140, 10, 22
FONT = "/usr/share/fonts/truetype/nanum/NanumGothic.ttf"


def pictures(source, *files):
    """Names and files."""
    yield "Original", pathlib.Path(source)
    if files:
        yield from ((pathlib.Path(file).stem, file) for file in files)
        return
    for page in sorted((ROOT / "docs/filters").glob("*.md")):
        picture = ROOT / f"docs/filters/pictures/{page.stem}-2.jpg"
        if picture.exists():
            yield next(line for line in page.read_text().splitlines() if line.startswith("# "))[2:], picture


def main():
    shown = list(pictures(*sys.argv[2:]))
    rows = -(-len(shown) // COLUMNS)
    sheet = Image.new("RGB", (GAP + COLUMNS * (WIDTH + GAP), GAP + rows * (HEIGHT + LABEL + GAP)), (32, 32, 32))
    draw, font = ImageDraw.Draw(sheet), ImageFont.truetype(FONT, 15)
    for place, (name, file) in enumerate(shown):
        left = GAP + place % COLUMNS * (WIDTH + GAP)
        top = GAP + place // COLUMNS * (HEIGHT + LABEL + GAP)
        with Image.open(file) as picture:
            sheet.paste(picture.convert("RGB").resize((WIDTH, HEIGHT), Image.Resampling.LANCZOS), (left, top))
        draw.text((left + WIDTH / 2, top + HEIGHT + LABEL / 2), name, (224, 224, 224), font, anchor="mm")
    sheet.save(sys.argv[1], quality=86)


if __name__ == "__main__":
    main()
