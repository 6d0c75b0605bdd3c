#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs clang-tidy over the built sources that changed, or whose headers did, since they were last found clean.

tidy.py BUILD_FOLDER   prints what clang-tidy finds; the result is 1 when there is anything

What was found clean is remembered for every checkout of a user, in ~/.cache/vireo-tidy.
"""

import hashlib
import json
import os
import subprocess
import sys
from collections import defaultdict
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
FOLDERS = ("app", "bridges", "engine", "filters", "framework", "host", "simd")


def sources(build):
    """The product's sources without the kernels, which use vector extensions that clang does not know."""
    commands = json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
    files = {Path(command["directory"], command["file"]).resolve() for command in commands}
    return sorted(file for file in files if is_checked(file, build))


def is_checked(file, build):
    root = build if is_compiled_together(file) else ROOT
    inside = file.is_relative_to(root) and file.relative_to(root).parts[0] in FOLDERS
    return inside and not file.name.endswith("_kernels.cpp")


def is_compiled_together(file):
    """Whether the build wrote it to include sources, which are checked together too."""
    return file.name.startswith("unity_")


def included_files(build):
    """What of ours each source was compiled from, itself among it. Ninja also remembers objects that are gone."""
    listed = subprocess.run(["ninja", "-C", build, "-t", "deps"], capture_output=True, text=True, check=True).stdout
    included = defaultdict(set)
    for entry in listed.split("\n\n"):
        files = [Path(os.path.normpath(build / line.strip())) for line in entry.splitlines()[1:]]
        if files:
            included[files[0]].update(file for file in files if file.is_relative_to(ROOT) and file.exists())
    return included


def main():
    build = Path(sys.argv[1]).resolve()
    stamps = Path(os.environ.get("XDG_CACHE_HOME") or Path.home() / ".cache") / "vireo-tidy"
    stamps.mkdir(parents=True, exist_ok=True)
    included = included_files(build)

    def stamp_of(source):
        digest = hashlib.sha256((ROOT / ".clang-tidy").read_bytes())
        for file in sorted(included[source] | {source}):
            digest.update(b"%s\0%s\0" % (str(file.relative_to(ROOT)).encode(), file.read_bytes()))
        return stamps / digest.hexdigest()

    def check(source):
        stamp = stamp_of(source)
        if stamp.exists():
            return True
        command = ["clang-tidy-14", "--quiet", "-p", build, source]
        if is_compiled_together(source):
            # Its compiler has a warning more to be told of that.
            command += ["--checks=-bugprone-suspicious-include", "--extra-arg=-Wno-unknown-warning-option"]
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
