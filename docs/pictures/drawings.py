#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws docs/architecture.md's pictures, which follow the reader's choice of light or dark."""

import pathlib

HERE = pathlib.Path(__file__).resolve().parent

STYLE = """
  svg { --paper: #ffffff; --ink: #1f2328; --soft: #59636e; --line: #8c959f;
        --caller: #ddf4ff; --host: #fff8c5; --module: #dafbe1; --inner: #ffffff; }
  @media (prefers-color-scheme: dark) {
    svg { --paper: #0d1117; --ink: #f0f6fc; --soft: #9198a1; --line: #656c76;
          --caller: #12324f; --host: #3d3210; --module: #12361f; --inner: #0d1117; }
  }
  .paper { fill: var(--paper) }
  .caller { fill: var(--caller) } .host { fill: var(--host) } .module { fill: var(--module) }
  .inner { fill: var(--inner) }
  rect { stroke: var(--line); rx: 6px } .paper { stroke: none }
  path { stroke: var(--ink); stroke-width: 1.5; fill: none; marker-end: url(#head) }
  .dashed { stroke-dasharray: 6 4 }
  marker path { fill: var(--ink); stroke: none; marker-end: none }
  text { font: 14px system-ui, sans-serif; fill: var(--ink); text-anchor: middle }
  .title { font-weight: 600 } .note { font-size: 12px; fill: var(--soft) } .left { text-anchor: start }
"""


class Drawing:
    def __init__(self, width, height, title):
        self.parts = [
            f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" '
            f'height="{height}" role="img">\n<!-- Written by docs/pictures/drawings.py. -->\n'
            f"<title>{title}</title>\n<style>{STYLE}</style>\n"
            '<defs><marker id="head" viewBox="0 0 8 8" refX="7" refY="4" markerWidth="9" markerHeight="9" '
            'orient="auto"><path d="M0 0 8 4 0 8z"/></marker></defs>\n'
            f'<rect class="paper" width="{width}" height="{height}"/>\n']

    def text(self, x, y, text, kind=""):
        kind = f' class="{kind}"' if kind else ""
        self.parts.append(f'<text x="{x}" y="{y}"{kind}>{text}</text>\n')

    def box(self, kind, x, y, width, height, title, *notes):
        """The title and the notes below it stand at the top; alone the title stands in the middle."""
        self.parts.append(f'<rect class="{kind}" x="{x}" y="{y}" width="{width}" height="{height}"/>\n')
        middle = x + width / 2
        alone = height / 2 + 5 if not notes else 22
        self.text(middle, y + alone, title, "title" if notes or kind != "inner" else "")
        for line, note in enumerate(notes):
            self.text(middle, y + 41 + 17 * line, note, "note")

    def arrow(self, way, dashed=False):
        self.parts.append(f'<path d="{way}"{" class=" + chr(34) + "dashed" + chr(34) if dashed else ""}/>\n')

    def save(self, name):
        (HERE / name).write_text("".join(self.parts) + "</svg>\n", encoding="utf-8")


def house():
    drawing = Drawing(900, 610, "Who includes and who loads whom")
    callers = [("app/", "vireo, the command line"), ("bridges/web/", "npm package, browser page"),
               ("examples/", "and your own program"), ("bridges/frei0r/", "vireo_*.so, one a filter")]
    for index, (title, note) in enumerate(callers):
        left = 20 + 220 * index
        drawing.box("caller", left, 20, 200, 60, title, note)
        drawing.arrow(f"M{left + 100} 80V{218 if index == 3 else 138}")
    drawing.text(28, 116, "include", "note left")

    drawing.box("host", 20, 140, 640, 56, "The engine: engine/",
                "libVireo.so, Vireo.dll. C interface in vireo/vireo.h: chains over frames")
    drawing.arrow("M340 196V218")

    drawing.box("host", 20, 220, 860, 140, "VireoHost: host/", "libVireoHost.so, VireoHost.dll. C interface in "
                "host/vireo_host.h; includes simd/ alone")
    libraries = [("vrm", "protocol, lists"), ("pixkit", "pixel buffers"), ("fxkit", "blur, tables"),
                 ("utilkit", "fixed point, alpha"), ("heapkit", "memory handles"), ("qrb", "language, locale"),
                 ("mtkcore", "texts")]
    for index, (name, note) in enumerate(libraries):
        drawing.box("inner", 36 + 119 * index, 286, 114, 56, name, note)

    drawing.arrow("M250 360V438", dashed=True)
    drawing.text(262, 404, "loads, and calls VRMetaPlugin()", "note left")
    drawing.arrow("M650 440V362")
    drawing.text(662, 404, "includes public headers, links", "note left")

    drawing.box("module", 20, 440, 860, 150, "The module: VireoFiltersMetaPlugin.vrmp",
                "standard library only; would run in another host that has the same seven libraries")
    for index, name in enumerate(("filters/basic/", "filters/color/", "filters/warp/", "filters/lens/")):
        left = 36 + 125 * index
        drawing.box("inner", left, 500, 115, 36, name)
    drawing.arrow("M526 518H565")
    drawing.box("inner", 567, 500, 140, 36, "framework/")
    drawing.arrow("M707 518H741")
    drawing.box("inner", 743, 500, 121, 36, "resources/")
    drawing.text(450, 568, "a filter: record, render, declaration, registration; its kernels and its dialog beside it; "
                 "never another folder of filters", "note")
    drawing.save("house.svg")


def journey():
    drawing = Drawing(900, 300, "How a frame travels")
    drawing.text(20, 28, "one thread reads", "note left")
    drawing.box("caller", 20, 40, 150, 90, "reader", "packets decoded,", "numbered, and their", "damage noted")
    drawing.text(210, 28, "as many threads as cores convert and render, a frame each", "note left")
    drawing.box("caller", 210, 40, 130, 90, "unpack", "YUV or RGB to", "bgra, rows from", "the bottom up")
    drawing.box("caller", 380, 40, 130, 90, "fields", "an interlaced frame", "is two buffers of", "every other row")
    drawing.box("caller", 550, 40, 130, 90, "pack", "back to the depth", "and colours of the", "output")
    drawing.text(720, 28, "the caller writes, in order", "note left")
    drawing.box("caller", 720, 40, 160, 90, "writer", "encoded, and sound,", "subtitles, chapters", "beside it")
    for left, right in ((170, 208), (340, 378), (510, 548), (680, 718)):
        drawing.arrow(f"M{left} 85H{right}")

    drawing.box("module", 210, 180, 470, 100, "each filter of the chain", "destination filled with a copy of the source",
                "Execute: rows through kernels", "mix: laid over the source with its weight")
    drawing.arrow("M430 130V178")
    drawing.arrow("M460 180V132")
    drawing.text(700, 226, "a filter that looks back asks for", "note left")
    drawing.text(700, 243, "earlier frames as the filters", "note left")
    drawing.text(700, 260, "before it made them", "note left")
    drawing.save("journey.svg")


if __name__ == "__main__":
    house()
    journey()
