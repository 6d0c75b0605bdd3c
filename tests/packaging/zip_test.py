# SPDX-License-Identifier: MIT
"""The zip for Windows, unpacked into a folder with blanks."""
import os
import re
import shlex
import shutil
import subprocess
import zipfile

import numpy

from conftest import BUILD, ROOT, only, pixels, run

EMULATOR = shlex.split(os.environ.get("VIREO_EMULATOR", "tests/windows/under-wine"))


def test_runs_from_wherever_it_is_unpacked(tmp_path, packages, picture):
    folder = tmp_path / "Program Files (é) & more"
    with zipfile.ZipFile(only(packages, "vireo-filters-*-windows*.zip")) as archive:
        assert archive.namelist() == sorted(archive.namelist())
        archive.extractall(folder)
    (unpacked,) = folder.iterdir()
    names = {path.name for path in unpacked.iterdir()}
    assert {"vireo.exe", "VireoHost.dll", "VireoFiltersMetaPlugin.vrmp", "libstdc++-6.dll", "libgcc_s_seh-1.dll",
            "libwinpthread-1.dll", "README.txt", "licences", "presets"} <= names
    for library in ("avcodec", "avfilter", "avformat", "avutil", "swresample", "swscale"):
        assert [*unpacked.glob(f"{library}-*.dll")], library
    for name in ("Vireo.dll", "include/vireo/vireo.h", "lib/libVireo.dll.a"):
        assert (unpacked / name).is_file(), name
    bundle = unpacked / "OFX/Plugins/Vireo.ofx.bundle/Contents"
    assert {"Vireo.ofx", "VireoOpenFX.dll", "Vireo.dll", "VireoHost.dll", "VireoFiltersMetaPlugin.vrmp", "libstdc++-6.dll",
            "libgcc_s_seh-1.dll", "libwinpthread-1.dll"} == {path.name for path in (bundle / "Win64").iterdir()}
    assert len(list((unpacked / "frei0r-1").glob("vireo_*.dll"))) == 22
    assert len(list((bundle / "Resources").glob("vireo.*.png"))) == 22
    assert {"LICENSE", "MIT.txt", "GPL-2.0-or-later.txt", "gcc-mingw-w64-x86-64-posix-runtime.txt"} <= {
        path.name for path in (unpacked / "licences").iterdir()}
    versions = (unpacked / "licences/ffmpeg/VERSIONS.txt").read_text()
    assert re.search(r"^    ffmpeg\s+7:", versions, re.MULTILINE) and "https://snapshot.debian.org/" in versions
    assert ("x264" in versions) == (unpacked / "licences/ffmpeg/GPL-2.txt").is_file()
    assert b"\r\n" in (unpacked / "README.txt").read_bytes()

    # A host elsewhere, which has nothing of ours: the bundle alone is copied to where it looks.
    host = tmp_path / "host"
    shutil.copytree(bundle.parent, tmp_path / "OFX Plugins/Vireo.ofx.bundle")
    host.mkdir()
    for name in ("openfx_loading_tests.exe", "libstdc++-6.dll", "libgcc_s_seh-1.dll", "libwinpthread-1.dll"):
        shutil.copy(BUILD / "bin" / name, host)
    bare = {name: value for name, value in os.environ.items() if name not in ("VIREO_MODULE", "WINEPATH")}
    assert "loaded and described" in run(*EMULATOR, host / "openfx_loading_tests.exe", cwd=host,
                                         environment={**bare, "OFX_PLUGIN_PATH": f"Z:{tmp_path}/OFX Plugins"})

    # A program of somebody's own, beside the libraries.
    run("x86_64-w64-mingw32-gcc", "-std=c11", "-Wall", "-Werror", ROOT / "examples/chain.c",
        "-I", unpacked / "include", "-L", unpacked / "lib", "-lVireo", "-o", unpacked / "chain.exe")

    # From another folder and without a hint: module and libraries are found beside the program.
    work = tmp_path / "work"
    work.mkdir()
    shutil.copy(picture, work)
    run(*EMULATOR, unpacked / "vireo.exe", "render", "in.png", "out.png", "-f", "Horizontal Flip", cwd=work, environment=bare)
    subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=64x48:d=0.4", "-f", "lavfi", "-i", "sine=d=0.4",
                    work / "clip.mp4"], check=True)
    run(*EMULATOR, unpacked / "vireo.exe", "render", "clip.mp4", "out.mp4", "-f", "Solarize", cwd=work, environment=bare)
    kinds = run("ffprobe", "-v", "error", "-show_entries", "stream=codec_name", "-of", "csv=p=0", work / "out.mp4")
    assert kinds.split() == ["h264" if "x264" in versions else "mpeg4", "aac"]
    (work / "in.ppm").write_bytes(b"P6\n2 1\n255\nabcdef")
    run(*EMULATOR, unpacked / "chain.exe", "in.ppm", "out.ppm", "Horizontal Flip", cwd=work, environment=bare)
    assert (work / "out.ppm").read_bytes() == b"P6\n2 1\n255\ndefabc"
    assert numpy.array_equal(pixels(work / "out.png"), pixels(picture)[:, ::-1])
