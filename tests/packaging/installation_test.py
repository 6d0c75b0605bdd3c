# SPDX-License-Identifier: MIT
"""An installation works wherever it is moved to: the program, the plug-ins, and
programs in C that know it by pkg-config alone."""
import json
import os
import pathlib
import shutil
import sys

import numpy

from conftest import BARE, BUILD, ROOT, only, run

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "bridges/frei0r"))
import hosts
from hosts import Effect


def test_everything_lies_where_it_is_looked_for(installation, tmp_path):
    libraries = only(installation, "**/frei0r-1").parent
    assert sorted(path.name for path in installation.iterdir()) == ["OFX", "bin", "include", "lib", "share"]
    for binary in (installation / "bin/vireo", *libraries.glob("vireo/*"),
                   only(installation, "OFX/Plugins/Vireo.ofx.bundle/Contents/*/Vireo.ofx")):
        found = run("ldd", binary).split("libVireoHost.so.1 => ")[1].split(" (")[0]
        assert os.path.normpath(found) == str(libraries / "libVireoHost.so.1")
    for place in ("man/man1/vireo.1", "bash-completion/completions/vireo", "zsh/*/_vireo",
                  "fish/vendor_completions.d/vireo.fish"):
        assert b"vireo" in only(installation / "share", place).read_bytes()
    listed = json.loads(run(installation / "bin/vireo", "presets", "--json", environment={**BARE, "HOME": str(tmp_path)}))
    assert len(listed) > 8
    assert {os.path.dirname(preset["file"]) for preset in listed} == {str(installation / "share/vireo/presets")}


def test_program_and_plugins_run_from_there(installation, tmp_path):
    chain = [Effect("Camera View", Longitude=20, Roll=5)]
    clip = hosts.random_clip(48, 47, 3)
    expected = hosts.with_vireo(clip, chain, tmp_path)
    assert numpy.array_equal(hosts.with_vireo(clip, chain, tmp_path, program=installation / "bin/vireo"), expected)
    # The build's own folder cannot help out: FFmpeg looks nowhere else.
    environment = hosts.plugin_environment(only(installation, "**/frei0r-1"))
    assert numpy.array_equal(hosts.with_ffmpeg(clip, chain, tmp_path, environment), expected)


def test_openfx_hosts_load_the_bundle_from_there(installation):
    said = run(BUILD / "bin/openfx_loading_tests", environment={**BARE, "OFX_PLUGIN_PATH": str(installation / "OFX/Plugins")})
    assert "loaded and described" in said


def test_programs_in_c_build_against_it(installation, tmp_path):
    environment = {**BARE, "PKG_CONFIG_PATH": str(only(installation, "**/pkgconfig"))}

    def query(*words):
        return run("pkg-config", *words, environment=environment).strip().replace("\\ ", " ")

    # Away from the sources, whose headers would serve as well.
    for name, package in (("host", "vireo-host"), ("chain", "vireo")):
        source = shutil.copy(ROOT / f"examples/{name}.c", tmp_path)
        flags = run("pkg-config", "--cflags", "--libs", package, environment=environment).strip()
        run("sh", "-c", f"gcc -std=c11 -Wall -Werror {source} {flags} -o {name}", cwd=tmp_path, environment=environment)
    loaded = {**BARE, "LD_LIBRARY_PATH": query("--variable=libdir", "vireo-host")}
    names = run(tmp_path / "host", query("--variable=module", "vireo-host"), environment=loaded).splitlines()
    assert len(names) == 22 and "10035  Levels" in names
    (tmp_path / "in.ppm").write_bytes(b"P6\n2 1\n255\nabcdef")
    run("./chain", "in.ppm", "out.ppm", "Horizontal Flip", cwd=tmp_path, environment=loaded)
    assert (tmp_path / "out.ppm").read_bytes() == b"P6\n2 1\n255\ndefabc"
    # Every header also stands alone.
    headers = installation / "include/vireo"
    for header in headers.rglob("*.h"):
        run("gcc", "-std=c11", "-Wall", "-Werror", "-fsyntax-only", "-x", "c", "-I", headers, header)
    assert query("--modversion", "vireo-host") in run(installation / "bin/vireo", "--version", environment=BARE)
