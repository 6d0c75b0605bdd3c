#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks what the compiler does not: who includes whom, the licence line and the length of each source file.

check_sources.py [FOLDER]   prints one line for each violation; the result is 1 when there are any
"""

import os
import re
import sys
from pathlib import Path

MAXIMUM_LINES = 600

CODE = {".c", ".cpp", ".h", ".in", ".rc"}
LICENSED = CODE | {".cmake", ".css", ".html", ".js", ".map", ".mjs", ".py", ".pyi", ".sh", ".toml", ".yml"}
LICENSED_NAMES = {"CMakeLists.txt", ".clang-tidy", "check", "demo", "run"}

# The only place of <windows.h>.
WINDOWS = "host/include/host/win32.h"

# What the command line stands on.
ENGINE = ["engine/", "simd/", WINDOWS]

# Each folder and the prefixes of what it may include; "{own}" is a folder of filters or of bridges. Longer
# folders come first.
LAYERS = {
    "simd/": ["simd/"],
    "host/": ["host/", "simd/"],
    "framework/": ["framework/", "resources/", "host/include/", "simd/"],
    "filters/": ["{own}", "framework/", "resources/", "host/include/", "simd/"],
    "resources/": ["resources/", "host/include/"],
    "engine/": ["engine/", "host/include/", "simd/"],
    "app/base/": ["app/base/", *ENGINE],
    "app/media/": ["app/media/", "app/base/", *ENGINE],
    "app/render/": ["app/render/", "app/media/", "app/base/", *ENGINE],
    # It hosts a filter by itself, to open its dialog.
    "app/commands/settings.cpp": ["app/", *ENGINE, "host/include/"],
    "app/": ["app/", *ENGINE],
    "bridges/frei0r/": ["{own}", "engine/include/", "host/include/"],
    "bridges/openfx/": ["{own}", "engine/include/", WINDOWS],
    "bridges/": ["{own}", "engine/include/"],
    "examples/": ["engine/include/", "host/include/"],
    "tests/": [""],
    "bench/": [""],
}

# Headers of these folders are included by their path below them.
INCLUDE_FOLDERS = {"vireo/": "engine/include/", "host/": "host/include/"}

# What hosting programs alone find: a module runs in other hosts too.
HOSTING = ("host/include/host/hosting/", "host/include/host/vireo_host.h")
MODULE = ("framework/", "filters/", "resources/")

# What the module may include beside the standard library.
MODULE_SYSTEM = {"commctrl.h", "commdlg.h", "dlgs.h", "windowsx.h"}

# What one processor has; only simd/ knows.
INTRINSICS = {"immintrin.h", "wasm_simd128.h"}

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def files(root):
    for folder, folders, names in os.walk(root):
        folders[:] = sorted(f for f in folders if f not in {"build", "demo-output", "node_modules", "__pycache__"})
        folders[:] = [f for f in folders if not f.startswith(".") or f == ".ci"]
        for name in sorted(names):
            yield Path(folder, name)


def layer_of(path):
    return next((layer for layer in LAYERS if path.startswith(layer)), None)


def include_violations(root, path, text):
    layer = layer_of(path)
    if layer is None:
        return
    own = "/".join(path.split("/")[:2]) + "/"
    allowed = tuple(prefix.replace("{own}", own) for prefix in LAYERS[layer])
    folder = path.rsplit("/", 1)[0] + "/"
    for bracket, included in INCLUDE.findall(text):
        if bracket == "<":
            if included == "windows.h":
                # Resource scripts are no C++.
                if path != WINDOWS and layer != "resources/":
                    yield "includes <windows.h> and not host/win32.h"
            elif included in INTRINSICS:
                if layer != "simd/":
                    yield f"includes <{included}> and not simd/"
            elif path.startswith(MODULE) and not is_standard(included) and included not in MODULE_SYSTEM:
                yield f"includes <{included}>, which is not of the standard library"
            continue
        target = target_of(root, folder, included)
        if not target.startswith(allowed):
            yield f"includes {included}, which is not for it"
        elif path.startswith(MODULE) and target.startswith(HOSTING):
            yield f"includes {included}, which not every host has"


def target_of(root, folder, included):
    for prefix, include_folder in INCLUDE_FOLDERS.items():
        if included.startswith(prefix) and (root / include_folder / included).exists():
            return include_folder + included
    # A neighbour may be named without its folder.
    return included if layer_of(included) else folder + included


def is_standard(header):
    return "/" not in header and "." not in header


def violations(root):
    for file in files(root):
        path = file.relative_to(root).as_posix()
        if file.suffix not in LICENSED and file.name not in LICENSED_NAMES:
            continue
        text = file.read_text(encoding="utf-8")
        head = text.splitlines()[:3]
        if not any("SPDX-License-Identifier: " in line for line in head):
            yield f"{path}: no SPDX line"
        if file.suffix in CODE:
            for violation in include_violations(root, path, text):
                yield f"{path}: {violation}"
            if text.count("\n") >= MAXIMUM_LINES:
                yield f"{path}: {text.count(chr(10))} lines"


def main():
    root = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent
    found = list(violations(root))
    for violation in found:
        print(violation)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
