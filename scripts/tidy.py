#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs clang-tidy over the sources of a build folder that changed since they were last found clean.

tidy.py BUILD_FOLDER   prints what clang-tidy finds; the result is 1 when there is anything
"""

import hashlib
import json
import os
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
FOLDERS = ("app", "bridges", "engine", "filters", "framework", "host", "simd")


def sources(build):
    """The product's sources without the kernels, which use vector extensions that clang does not know."""
    commands = json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
    files = {Path(command["directory"], command["file"]).resolve() for command in commands}
    return sorted(file for file in files if is_checked(file))


def is_checked(file):
    inside = file.is_relative_to(ROOT) and file.relative_to(ROOT).parts[0] in FOLDERS
    return inside and not file.name.endswith("_kernels.cpp")


def headers_hash():
    """Any header may matter to any source."""
    digest = hashlib.sha256((ROOT / ".clang-tidy").read_bytes())
    for folder in (*FOLDERS, "resources"):
        for header in sorted((ROOT / folder).rglob("*.h")):
            digest.update(str(header).encode() + header.read_bytes())
    return digest.digest()


def main():
    build = Path(sys.argv[1]).resolve()
    stamps = build / "tidy"
    stamps.mkdir(exist_ok=True)
    headers = headers_hash()

    def check(source):
        stamp = stamps / hashlib.sha256(str(source).encode() + source.read_bytes() + headers).hexdigest()
        if stamp.exists():
            return True
        command = ["clang-tidy-14", "--quiet", "-p", build, source]
        result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False)
        if result.returncode == 0:
            stamp.touch()
        print(result.stdout, end="", flush=True)
        return result.returncode == 0

    with ThreadPoolExecutor(os.cpu_count()) as pool:
        clean = list(pool.map(check, sources(build)))
    return 0 if all(clean) else 1


if __name__ == "__main__":
    sys.exit(main())
