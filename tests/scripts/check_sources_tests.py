# SPDX-License-Identifier: MIT
"""The checker of sources finds each kind of violation and nothing else."""

import subprocess
import sys
from pathlib import Path

import pytest

CHECKER = Path(__file__).parents[2] / "scripts" / "check_sources.py"
LICENCE = "// SPDX-License-Identifier: MIT\n"
PUBLIC = ["host/vireo_host.h", "host/win32.h", "host/hosting/meta_plugin.h", "host/hosting/property_list.h", "host/pixkit/pixkit.h", "host/qrb/exceptions.h"]


def check(root):
    result = subprocess.run([sys.executable, CHECKER, root], capture_output=True, text=True)
    assert result.returncode == (1 if result.stdout.strip() else 0), result.stderr
    return result.stdout


@pytest.fixture
def root(tmp_path):
    for header in PUBLIC:
        write(tmp_path, f"host/include/{header}", LICENCE)
    return tmp_path


def write(root, path, text):
    file = root / path
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text(text, encoding="utf-8")


@pytest.mark.parametrize(
    "path, include",
    [
        ("host/vrm/a.h", '"app/files.h"'),
        ("simd/a.h", '"host/pixkit/pixkit.h"'),
        ("framework/a.cpp", '"host/hosting/property_list.h"'),
        ("framework/a.cpp", '"host/pixkit/copy_kernels.h"'),
        ("framework/a.cpp", "<nlohmann/json.hpp>"),
        ("filters/warp/a.cpp", '"filters/color/levels.h"'),
        ("filters/warp/a.cpp", '"host/vireo_host.h"'),
        ("filters/warp/a.cpp", "<gtest/gtest.h>"),
        ("engine/chain/a.cpp", '"framework/registry.h"'),
        ("app/a.cpp", "<windows.h>"),
        ("app/commands/a.cpp", '"host/hosting/property_list.h"'),
        ("app/render/a.cpp", '"app/commands/options.h"'),
        ("app/media/a.cpp", '"app/render/pipeline.h"'),
        ("app/base/a.cpp", '"app/media/media.h"'),
        ("bridges/python/a.cpp", '"host/vireo_host.h"'),
        ("bridges/python/a.cpp", '"bridges/web/module.h"'),
        ("bridges/web/a.cpp", '"bridges/frei0r/module.h"'),
        ("bridges/web/a.cpp", '"engine/chain/filter_chain.h"'),
        ("bridges/frei0r/a.cpp.in", '"filters/basic/solarize_kernels.h"'),
        ("filters/lens/a.cpp", "<immintrin.h>"),
    ],
)
def test_includes_from_above_are_found(root, path, include):
    write(root, path, f"{LICENCE}  #  include {include}\n")
    found = check(root)
    assert found.startswith(f"{path}: includes ")
    assert found.count("\n") == 1


@pytest.mark.parametrize(
    "path, include",
    [
        ("host/include/host/win32.h", "<windows.h>"),
        ("simd/a.h", "<immintrin.h>"),
        ("host/vrm/a.cpp", '"host/hosting/property_list.h"'),
        ("framework/a.cpp", '"resources/linked_resources.h"'),
        ("filters/lens/a.cpp", '"sampler.h"'),
        ("filters/lens/a.cpp", '"host/qrb/exceptions.h"'),
        ("app/commands/settings.cpp", '"host/hosting/property_list.h"'),
        ("bridges/frei0r/a.cpp", '"host/hosting/meta_plugin.h"'),
        ("tests/a.cpp", '"app/files.h"'),
    ],
)
def test_includes_from_below_are_left_alone(root, path, include):
    write(root, path, f"{LICENCE}#include {include}\n")
    assert check(root) == ""


@pytest.mark.parametrize("path", ["host/a.cpp", "scripts/a.py", "CMakeLists.txt", "check", ".ci/run"])
def test_every_source_needs_its_licence_line(tmp_path, path):
    write(tmp_path, path, "\n\n\n\n" + LICENCE)
    assert check(tmp_path) == f"{path}: no SPDX line\n"
    write(tmp_path, path, "#!/bin/sh\n" + LICENCE)
    assert check(tmp_path) == ""


def test_long_files_are_found_outside_build_folders(tmp_path):
    write(tmp_path, "host/long.cpp", LICENCE * 600)
    write(tmp_path, "host/short.cpp", LICENCE * 599)
    write(tmp_path, "build/linux/long.cpp", "\n" * 900)
    assert check(tmp_path) == "host/long.cpp: 600 lines\n"
