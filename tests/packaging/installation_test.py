# SPDX-License-Identifier: MIT
"""A program in C that knows an installation by pkg-config alone."""
import shutil

from conftest import BARE, BUILD, ROOT, run


def test_a_host_in_c_builds_against_the_installation(tmp_path):
    run("cmake", "--install", BUILD, "--prefix", tmp_path / "first")
    installed = tmp_path / "moved"
    shutil.move(tmp_path / "first", installed)
    (pkgconfig,) = installed.glob("**/pkgconfig")
    environment = {**BARE, "PKG_CONFIG_PATH": str(pkgconfig)}

    def query(*words):
        return run("pkg-config", *words, "vireo-host", environment=environment).split()

    # Away from the sources, whose headers would serve as well.
    source = shutil.copy(ROOT / "examples/host.c", tmp_path)
    run("gcc", "-std=c11", "-Wall", "-Werror", source, *query("--cflags", "--libs"), "-o", "host", cwd=tmp_path,
        environment=environment)
    loaded = {**BARE, "LD_LIBRARY_PATH": query("--variable=libdir")[0]}
    names = run(tmp_path / "host", *query("--variable=module"), environment=loaded).splitlines()
    assert len(names) == 22 and "10035  Levels" in names
    # Every header also stands alone.
    headers = installed / "include/vireo"
    for header in headers.rglob("*.h"):
        run("gcc", "-std=c11", "-Wall", "-Werror", "-fsyntax-only", "-x", "c", "-I", headers, header)

    assert query("--modversion")[0] in run(installed / "bin/vireo", "--version", environment=BARE)
    assert "libVireoHost.so.1" in run("readelf", "-d", installed / "bin/vireo")
