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
LICENSED = CODE | {".cmake", ".css", ".html", ".js", ".map", ".mjs", ".py", ".sh", ".toml", ".yml"}
LICENSED_NAMES = {"CMakeLists.txt", ".clang-tidy", "check", "demo", "run"}

# Each folder and the prefixes of what it may include; "{own}" is a folder of filters or of bridges. Longer
# folders come first.
LAYERS = {
    "host/": ["host/"],
    "framework/": ["framework/", "resources/", "host/"],
    "filters/": ["{own}", "framework/", "resources/", "host/"],
    "resources/": ["resources/", "host/"],
    "engine/": ["engine/", "host/"],
    "app/": ["app/", "engine/", "host/"],
    "bridges/frei0r/": ["{own}", "engine/include/", "host/"],
    "bridges/": ["{own}", "engine/include/"],
    "examples/": ["engine/include/", "host/"],
    "tests/": [""],
    "bench/": [""],
}

# The host's own side, which a module that runs in another host would not find.
HOST_INSIDE = [
    "host/vireo_host.h",
    "host/fxkit/channel_services.h",
    "host/heapkit/memory_handles.h",
    "host/pixkit/mix.h",
    "host/vrm/filter_instance.h",
    "host/vrm/filter_traits.h",
    "host/vrm/meta_plugin.h",
    "host/vrm/module_library.h",
    "host/vrm/parameter_value.h",
    "host/vrm/property_list.h",
    "host/vrm/worker_threads.h",
]
MODULE = ("framework/", "filters/", "resources/")

# What the module may include beside the standard library.
MODULE_SYSTEM = {"immintrin.h", "wasm_simd128.h", "commctrl.h", "commdlg.h", "dlgs.h", "windowsx.h"}

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def files(root):
    for folder, folders, names in os.walk(root):
        folders[:] = sorted(f for f in folders if f not in {"build", "demo-output", "node_modules", "__pycache__"})
        folders[:] = [f for f in folders if not f.startswith(".") or f == ".ci"]
        for name in sorted(names):
            yield Path(folder, name)


def layer_of(path):
    return next((layer for layer in LAYERS if path.startswith(layer)), None)


def include_violations(path, text):
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
                if path != "host/win32.h" and layer != "resources/":
                    yield "includes <windows.h> and not host/win32.h"
            elif path.startswith(MODULE) and not is_standard(included) and included not in MODULE_SYSTEM:
                yield f"includes <{included}>, which is not of the standard library"
            continue
        if included.startswith("vireo/"):
            included = "engine/include/" + included
        # A neighbour may be named without its folder.
        target = included if layer_of(included) else folder + included
        if not target.startswith(allowed):
            yield f"includes {included}, which lies above it"
        elif path.startswith(MODULE) and target in HOST_INSIDE:
            yield f"includes {included}, which is the host's own"


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
            for violation in include_violations(path, text):
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
