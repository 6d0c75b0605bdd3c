#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the filters' pages from the property lists and the notes beside this file.

generate.py VIREO                     writes the pages
generate.py VIREO --check             says which pages are not as they would be written; the result is 1 then
generate.py VIREO --pictures SOURCES  renders the pictures from the sources that docs/pictures/make.sh made
"""

import argparse
import json
import pathlib
import re
import struct
import subprocess
import sys
import tempfile
import tomllib
import zlib

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
WRITTEN = "<!-- Written by docs/filters/generate.py from {} and the property lists. -->\n"
INDEX_COLUMNS = 4


class Filter:
    """What the module says of a filter, and the notes on it."""

    def __init__(self, vireo, entry, plugin):
        self.vireo = vireo
        self.plugin = plugin
        self.file = plugin.replace("_", "-")
        self.properties = json.loads(run(vireo, "info", str(entry["id"]), "--json"))
        self.name = self.properties["name"]
        limits = re.search("Largest +(.*)", run(vireo, "info", str(entry["id"])).decode())
        self.limits = limits and limits.group(1)
        self.notes = tomllib.loads((HERE / f"notes/{self.file}.toml").read_text(encoding="utf-8"))
        self.pictures = [Picture(self, number, picture)
                         for number, picture in enumerate(self.notes["pictures"], start=1)]
        unknown = self.notes.get("parameters", {}).keys() - {p["name"] for p in self.properties["parameters"]}
        if unknown:
            sys.exit(f"{self.file}.toml: {self.name} has no parameter {', '.join(unknown)}")


class Picture:
    """A picture of a page: the source through the filter with some settings."""

    def __init__(self, of, number, picture):
        self.of = of
        self.file = f"pictures/{of.file}-{number}.jpg"
        self.settings = picture.get("settings", "")
        self.filter = picture.get("filter", of.name + (":" + self.settings if self.settings else ""))
        self.repeat = picture.get("repeat", 1)
        self.frame = picture.get("frame", 0)
        self.caption = picture.get("caption")

    def label(self):
        if self.caption and self.settings:
            return f"{self.caption}: `{self.settings}`"
        if self.caption or self.settings:
            return self.caption or f"`{self.settings}`"
        return "Start values" if self.of.properties["parameters"] else self.of.name

    def arguments(self):
        return ["-f", self.filter] * self.repeat if self.filter else ["-f", "Levels:mix=0%"]

    def alternative(self):
        label = self.label().replace("`", "")
        return label if label.startswith(self.of.name) else f"{self.of.name}, {label}"


def run(*command):
    completed = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, check=False)
    if completed.returncode != 0:
        sys.exit(f"failed: {' '.join(map(str, command))}")
    return completed.stdout


def filters(vireo):
    names = run(sys.executable, "-B", ROOT / "resources/generate.py", "names").decode()
    plugins = {int(line.split()[0]): line.split()[1] for line in names.splitlines()}
    listed = [Filter(vireo, entry, plugins[entry["id"]]) for entry in json.loads(run(vireo, "list", "--json"))]
    return sorted(listed, key=lambda filter: filter.name)


def value(parameter, stored):
    """A stored value as the command line takes it."""
    if parameter["kind"] == "boolean":
        return "on" if stored else "off"
    return str(stored)


def parameter_table(filter):
    parameters = filter.properties["parameters"]
    if not parameters:
        return "None; `from`, `to` and `mix` work as for every filter.\n"
    meanings = filter.notes.get("parameters", {})
    rows = ["| Parameter | Range | Start | Meaning |\n|---|---|---|---|\n"]
    for parameter in parameters:
        low, high = (f"{parameter[end]:g}" for end in ("minimum", "maximum"))
        span = {"number": f"{low} to {high}", "boolean": "on, off", "colour": "colour"}[parameter["kind"]]
        if parameter["kind"] == "number" and takes_percent(parameter):
            span += f", 0% to {parameter['displayMaximum']:g}%"
        meaning = meanings.get(parameter["name"], "")
        rows.append(f"| {parameter['name']} | {span} | {value(parameter, parameter['default'])} | {meaning} |\n")
    return "".join(rows)


def takes_percent(parameter):
    return parameter["displayMinimum"] == 0 and parameter["displayMaximum"] in (100, 200)


def empty_picture(path):
    """A pixel of PNG."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 1, 1, 8, 2, 0, 0, 0))
                     + chunk(b"IDAT", zlib.compress(bytes(4))) + chunk(b"IEND", b""))


def frei0r_values(filter, settings, folder):
    """The settings as FFmpeg takes them for the plug-in, up to the last that is not the filter's own."""
    picture, saved = folder / "pixel.png", folder / "settings.json"
    if not picture.exists():
        empty_picture(picture)
    run(filter.vireo, "render", picture, folder / "out.png", "-f", f"{filter.name}:{settings}", "--overwrite",
        "--quiet", "--save-settings", saved)
    stored = json.loads(saved.read_text(encoding="utf-8"))["filters"][0]["parameters"]
    saved.unlink()
    texts, last = [], 0
    for index, parameter in enumerate(filter.properties["parameters"], start=1):
        chosen = stored.get(parameter["name"], parameter["default"])
        if chosen != parameter["default"]:
            last = index
        if parameter["kind"] == "boolean":
            texts.append("y" if chosen else "n")
        elif parameter["kind"] == "colour":
            texts.append(chosen.replace("#", "0x"))
        else:
            low, high = parameter["minimum"], parameter["maximum"]
            texts.append(f"{(chosen - low) / (high - low):.6f}".rstrip("0").rstrip("."))
    return texts[:last]


def example(filter, folder):
    shown = next((p for p in filter.pictures if p.settings and "mix=" not in p.settings), None)
    settings = shown.settings if shown else ""
    values = frei0r_values(filter, settings, folder) if settings else []
    frei0r = f"vireo_{filter.plugin}" + (":" + "|".join(values) if values else "")
    text = filter.name + (":" + settings if settings else "")
    media = "mp4" if filter.notes.get("time") else "png"
    sample = "&sample=clip&frame=12" if filter.notes.get("time") else ""
    return (f'```sh\nvireo render in.{media} out.{media} -f "{text}"\n'
            f'ffmpeg -i in.mp4 -vf "frei0r={frei0r}" out.mp4\n```\n\n'
            f"In the [browser page](../browser.md): `index.html#f={address(text)}{sample}`\n")


def address(text):
    """A filter and its settings as the page's address has them."""
    return "".join("%" + format(ord(c), "02X") if c in "#&" else c for c in text if c not in " ()")


def page(filter, folder):
    properties = filter.properties
    parts = [WRITTEN.format(f"notes/{filter.file}.toml"), f"# {filter.name}\n\n", filter.notes["summary"], "\n\n"]
    cells = [f"![{p.alternative()}]({p.file})" for p in filter.pictures]
    labels = [p.label() for p in filter.pictures]
    parts += [f"| {' | '.join(labels)} |\n", "|" + "---|" * len(cells) + "\n", f"| {' | '.join(cells)} |\n\n"]
    parts += ["## Parameters\n\n", parameter_table(filter), "\n## Use\n\n", example(filter, folder), "\n"]
    if filter.notes.get("time"):
        parts.append("The picture changes with the frame's number, which frei0r hosts have to be "
                     "[told about](../frei0r.md#time).\n\n")
    if "dialog" in filter.notes:
        parts += ["On Windows the filter has a dialog: `vireo settings \"" + filter.name + "\" --image photo.png`.\n\n",
                  f"![The dialog of {filter.name}](../screenshots/{filter.notes['dialog']}-en.png)\n\n"]
    parts += ["## Notes\n\n", filter.notes["notes"].strip(), "\n\n"]
    if filter.limits:
        parts.append(f"Takes frames up to {filter.limits}; larger ones are [refused](README.md#sizes).\n\n")
    parts += [f"Category {properties['category']}, id {properties['id']}, match name `{properties['matchName']}`, "
              f"frei0r plug-in `vireo_{filter.plugin}`. [All filters](README.md)\n"]
    return "".join(parts)


def index(all_filters):
    parts = ["<table>\n"]
    for begin in range(0, len(all_filters), INDEX_COLUMNS):
        parts.append("<tr>\n")
        for filter in all_filters[begin:begin + INDEX_COLUMNS]:
            parts.append(f'<td align="center"><a href="{filter.file}.md"><img src="{filter.pictures[1].file}" '
                         f'width="200" alt="{filter.name}"><br>{filter.name.replace("&", "&amp;")}</a></td>\n')
        parts.append("</tr>\n")
    parts.append("</table>\n\n| Filter | What it does |\n|---|---|\n")
    parts += [f"| [{filter.name}]({filter.file}.md) | {filter.notes['summary']} |\n" for filter in all_filters]
    text = (HERE / "notes/README.txt").read_text(encoding="utf-8")
    return WRITTEN.format("notes/README.txt") + text.replace("<!-- filters -->\n", "".join(parts))


def pages(all_filters):
    with tempfile.TemporaryDirectory() as folder:
        written = {f"{filter.file}.md": page(filter, pathlib.Path(folder)) for filter in all_filters}
    return {**written, "README.md": index(all_filters)}


def render_pictures(all_filters, sources):
    """JPEGs, with a checkerboard behind what is transparent."""
    (HERE / "pictures").mkdir(exist_ok=True)
    with tempfile.TemporaryDirectory() as folder:
        for filter in all_filters:
            for picture in filter.pictures:
                render_picture(filter, picture, sources, pathlib.Path(folder))


def render_picture(filter, picture, sources, folder):
    source = sources / f"{filter.notes['source']}.png"
    result = folder / "result.png"
    if filter.notes.get("time"):
        clip = sources / f"{filter.notes['source']}.mkv"
        run(filter.vireo, "render", clip, folder / "frame%04d.png", *picture.arguments(), "--overwrite", "--quiet",
            "--alpha", "--start-number", 0, "--frames", f"{picture.frame}-{picture.frame}")
        result = next(folder.glob("frame*.png")).replace(result)
    else:
        run(filter.vireo, "render", source, result, *picture.arguments(), "--overwrite", "--quiet")
    enlarge = filter.notes.get("enlarge", 1)
    graph = (f"[1]format=rgba,scale=iw*{enlarge}:ih*{enlarge}:flags=neighbor[picture];"
             "[0][picture]overlay=format=rgb,format=yuvj444p")
    run("ffmpeg", "-v", "error", "-y", "-i", sources / "checkerboard.png", "-i", result, "-filter_complex", graph,
        "-q:v", "5", "-bitexact", HERE / picture.file)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("vireo", type=pathlib.Path)
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--pictures", type=pathlib.Path)
    options = parser.parse_args()
    all_filters = filters(options.vireo)
    if options.pictures:
        render_pictures(all_filters, options.pictures)
    outdated = 0
    for name, text in pages(all_filters).items():
        if not options.check:
            (HERE / name).write_text(text, encoding="utf-8")
        elif not (HERE / name).exists() or (HERE / name).read_text(encoding="utf-8") != text:
            print(f"docs/filters/{name} is out of date: run docs/filters/generate.py build/linux/bin/vireo")
            outdated = 1
    return outdated


if __name__ == "__main__":
    sys.exit(main())
