#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Puts the page and the package together.

assemble.py FOLDER VERSION LIBRARIES   copies the package beside the built FOLDER/vireo/vireo.wasm and the page around
                                       it, with the libraries that lie built in LIBRARIES, and writes vireo.html,
                                       the page as one file

The one file holds plain scripts: pages that are opened from a folder may neither fetch nor start a module as worker.
"""

import base64
import hashlib
import json
import re
import shutil
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[1]
PAGE = ["index.html", "page.css", "app.webmanifest", "icon.svg"]
PROGRAM = "vireo/vireo.wasm"
SAMPLES = {"fruit.jpg": "image/jpeg", "cutout.png": "image/png", "clip.mp4": "video/mp4"}

# What a browser keeps of the page.
KEPT = {".css", ".html", ".jpg", ".mjs", ".mp4", ".png", ".svg", ".wasm", ".webmanifest"}

# What vireo.wasm holds of others' sources, and where their terms lie.
LICENCES = {
    "musl.txt": "/usr/share/emscripten/system/lib/libc/musl/COPYRIGHT",
    "emscripten.txt": "/usr/share/doc/emscripten/copyright",
    "nlohmann-json.txt": "/usr/share/doc/nlohmann-json3-dev/copyright",
}

# What media.mjs holds of others' sources, all of it as it was published.
LIBRARY_LICENCES = {"mediabunny": "LICENSE", "client-zip": "LICENSE.txt"}

IMPORT = re.compile(r"^import (?:\{([^}]*)\}|(\w+)) from '\./([\w./]+)';\n", re.MULTILINE)
PASSED_ON = re.compile(r"(?:^|(?<=;))export ?\{([^}]*)\};\n", re.MULTILINE)
EXPORT = re.compile(r"^export (?=(?:const|class|function\*?|async function\*?) (\w+))", re.MULTILINE)
LINK = re.compile(r"(?<!!)\[([^]]+)\]\((?!https?:)[^)]*\)")
DEFAULT = re.compile(r"^export default (\w+);", re.MULTILINE)


def variable(file_name):
    return "module_" + re.sub(r"\W", "_", file_name)


def plain_script(folder, file_name, done):
    """A module and all that it imports, each as a function's result; `done` names those that stand already."""
    if file_name in done:
        return ""
    done.add(file_name)
    path = folder / file_name
    text = path.read_text(encoding="utf-8")

    def of(match):
        return (path.parent / match[3]).relative_to(folder).as_posix()

    before = "".join(plain_script(folder, of(match), done) for match in IMPORT.finditer(text))

    def taken(match):
        names = match[1].replace(" as ", ": ") if match[1] else f"default: {match[2]}"
        return f"const {{{names}}} = {variable(of(match))};\n"

    names = [*EXPORT.findall(text), *(f"default: {name}" for name in DEFAULT.findall(text))]
    for passed in PASSED_ON.findall(text):
        pairs = (name.strip().partition(" as ") for name in passed.split(","))
        names += [f"{outside}: {inside}" if outside else inside for inside, _, outside in pairs]
    text = DEFAULT.sub("", PASSED_ON.sub("", EXPORT.sub("", IMPORT.sub(taken, text))))
    text = text.replace("import.meta.url", '"file:///"')
    left = re.search(r"^(import|export)\b.*", text, re.MULTILINE)
    if left:
        sys.exit(f"{file_name}: cannot make a plain script of: {left[0]}")
    return f"{before}const {variable(file_name)} = (() => {{\n{text}\nreturn {{ {', '.join(names)} }};\n}})();\n"


def inlined(data, kind):
    return {"type": kind, "base64": base64.b64encode(data).decode("ascii")}


def one_file(folder):
    """The text of the page as one file."""
    worker = "'use strict';\n" + plain_script(folder, "worker.mjs", set())
    files = {
        PROGRAM: inlined((folder / PROGRAM).read_bytes(), "application/wasm"),
        "worker.mjs": inlined(worker.encode("utf-8"), "text/javascript"),
    }
    for name, kind in SAMPLES.items():
        files[f"samples/{name}"] = inlined((folder / "samples" / name).read_bytes(), kind)
    page = plain_script(folder, "page.mjs", set()).replace("</", "<\\/")
    style = (folder / "page.css").read_text(encoding="utf-8")
    parts = {
        '<link rel="manifest" href="app.webmanifest">\n': "",
        '<link rel="stylesheet" href="page.css">': f"<style>\n{style}</style>",
        '<script type="module" src="page.mjs"></script>': f"<script>globalThis.vireoFiles = {json.dumps(files)};</script>\n"
        f'<script type="module">\n{page}</script>',
    }
    text = (folder / "index.html").read_text(encoding="utf-8")
    for part, content in parts.items():
        if text.count(part) != 1:
            sys.exit(f"index.html does not hold once: {part}")
        text = text.replace(part, content)
    return text


def put_package(folder, version):
    """The package beside its program. Of the documentation it holds this one page, so other links lead nowhere."""
    for old in folder.glob("*.mjs"):
        old.unlink()
    for source in [HERE / "vireo/index.d.ts", *(HERE / "vireo").glob("*.mjs")]:
        shutil.copyfile(source, folder / source.name)
    page = (ROOT / "docs/javascript.md").read_text(encoding="utf-8")
    (folder / "README.md").write_text(LINK.sub(r"\1", page), encoding="utf-8")
    description = json.loads((HERE / "vireo/package.json").read_text(encoding="utf-8")) | {"version": version}
    (folder / "package.json").write_text(json.dumps(description, indent=2) + "\n", encoding="utf-8")
    shutil.copyfile(ROOT / "LICENSES/MIT.txt", folder / "LICENSE")
    (folder / "licenses").mkdir(exist_ok=True)
    for name, source in LICENCES.items():
        shutil.copyfile(source, folder / "licenses" / name)


def put_service_worker(folder):
    """The names of all that the page loads, and a name for this version of it."""
    names = sorted(path.relative_to(folder).as_posix() for path in folder.rglob("*") if path.suffix in KEPT)
    names = [name for name in names if name not in ("service_worker.mjs", "vireo.html")]
    version = hashlib.sha256()
    for name in names:
        version.update((folder / name).read_bytes())
    path = folder / "service_worker.mjs"
    filled = {
        "const files = [];": f"const files = {json.dumps(['./', *names])};",
        "const cacheName = '';": f"const cacheName = 'vireo-{version.hexdigest()[:16]}';",
    }
    text = path.read_text(encoding="utf-8")
    for part, content in filled.items():
        if text.count(part) != 1:
            sys.exit(f"service_worker.mjs does not hold once: {part}")
        text = text.replace(part, content)
    path.write_text(text, encoding="utf-8")


def put_libraries(folder, libraries):
    """The page's libraries beside their licences, which tell where their sources are."""
    shutil.copyfile(libraries / "media.js", folder / "media.mjs")
    (folder / "licenses").mkdir(exist_ok=True)
    for name, licence in LIBRARY_LICENCES.items():
        package = libraries / "node_modules" / name
        version = json.loads((package / "package.json").read_text(encoding="utf-8"))["version"]
        source = f"{name} {version}, unchanged: https://www.npmjs.com/package/{name}/v/{version}\n\n"
        text = (package / licence).read_text(encoding="utf-8")
        (folder / "licenses" / f"{name}.txt").write_text(source + text, encoding="utf-8")


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    folder = Path(sys.argv[1])
    put_package(folder / "vireo", sys.argv[2])
    put_libraries(folder, Path(sys.argv[3]))
    (folder / "samples").mkdir(exist_ok=True)
    for path in [*(HERE / name for name in PAGE), *HERE.glob("*.mjs")]:
        shutil.copyfile(path, folder / path.name)
    for name in SAMPLES:
        shutil.copyfile(HERE / "samples" / name, folder / "samples" / name)
    put_service_worker(folder)
    (folder / "vireo.html").write_text(one_file(folder), encoding="utf-8")


if __name__ == "__main__":
    main()
