# SPDX-License-Identifier: MIT
"""Programs in C that know an installation by pkg-config alone."""
import shutil

from conftest import BARE, BUILD, ROOT, run


def test_programs_in_c_build_against_the_installation(tmp_path):
    run("cmake", "--install", BUILD, "--prefix", tmp_path / "first")
    installed = tmp_path / "moved"
    shutil.move(tmp_path / "first", installed)
    (pkgconfig,) = installed.glob("**/pkgconfig")
    environment = {**BARE, "PKG_CONFIG_PATH": str(pkgconfig)}

    def query(*words, package="vireo-host"):
        return run("pkg-config", *words, package, environment=environment).split()

    # Away from the sources, whose headers would serve as well.
    for name, package in (("host", "vireo-host"), ("chain", "vireo")):
        source = shutil.copy(ROOT / f"examples/{name}.c", tmp_path)
        run("gcc", "-std=c11", "-Wall", "-Werror", source, *query("--cflags", "--libs", package=package), "-o", name,
            cwd=tmp_path, environment=environment)
    loaded = {**BARE, "LD_LIBRARY_PATH": query("--variable=libdir")[0]}
    names = run(tmp_path / "host", *query("--variable=module"), environment=loaded).splitlines()
    assert len(names) == 22 and "10035  Levels" in names
    (tmp_path / "in.ppm").write_bytes(b"P6\n2 1\n255\nabcdef")
    run("./chain", "in.ppm", "out.ppm", "Horizontal Flip", cwd=tmp_path, environment=loaded)
    assert (tmp_path / "out.ppm").read_bytes() == b"P6\n2 1\n255\ndefabc"
    # Every header also stands alone.
    headers = installed / "include/vireo"
    for header in headers.rglob("*.h"):
        run("gcc", "-std=c11", "-Wall", "-Werror", "-fsyntax-only", "-x", "c", "-I", headers, header)

    assert query("--modversion")[0] in run(installed / "bin/vireo", "--version", environment=BARE)
    assert "libVireoHost.so.1" in run("readelf", "-d", installed / "bin/vireo")
