# SPDX-License-Identifier: MIT
"""The Debian package, unpacked into an empty root."""
import re

import numpy
import pytest
from PIL import Image

from conftest import BARE, packed, run


@pytest.fixture(scope="module")
def package(tmp_path_factory):
    return packed(tmp_path_factory.mktemp("cpack"), "vireo-filters_*_amd64.deb")


@pytest.fixture(scope="module")
def root(package, tmp_path_factory):
    root = tmp_path_factory.mktemp("root")
    run("dpkg-deb", "-x", package, root)
    return root


def field(package, name):
    return run("dpkg-deb", "-f", package, name).strip()


def elf_files(root):
    for path in sorted(root.rglob("*")):
        if path.is_file() and not path.is_symlink() and path.read_bytes()[:4] == b"\x7fELF":
            yield path


def test_files_lie_where_debian_has_them(package, root):
    assert len(list((root / "usr/lib/frei0r-1").glob("vireo_*.so"))) == 22
    shlibs = run("dpkg-deb", "--info", package, "shlibs")
    for library in ("libVireo", "libVireoHost"):
        assert (root / f"usr/lib/{library}.so.1").exists() and (root / f"usr/lib/{library}.so").is_symlink()
        assert f"{library} 1 vireo-filters" in shlibs
    for name in ("bin/vireo", "lib/vireo/VireoFiltersMetaPlugin.vrmp", "lib/pkgconfig/vireo-host.pc",
                 "lib/pkgconfig/vireo.pc", "include/vireo/host/vireo_host.h", "include/vireo/vireo.h", "share/doc/vireo-filters/copyright",
                 "share/kdenlive/effects/vireo_levels.xml", "share/man/man1/vireo.1", "share/vireo/presets/vhs.json",
                 "share/bash-completion/completions/vireo"):
        assert (root / "usr" / name).is_file(), name
    assert [path.name for path in root.iterdir()] == ["usr"]
    for line in run("dpkg-deb", "-c", package).splitlines():
        assert re.match(r"([-d]rw[-x]r-[-x]r-[-x]|lrwxrwxrwx) root/root ", line), line
    assert "ldconfig" in run("dpkg-deb", "--info", package, "postinst")
    for binary in elf_files(root):
        assert ".debug_info" not in run("readelf", "-SW", binary), f"{binary} is not stripped"


def test_dependencies_name_every_library(package, root):
    own = {path.name for path in root.rglob("*.so*")}
    needed = set()
    for binary in elf_files(root):
        needed |= set(re.findall(r"\(NEEDED\).*\[(.+)\]", run("readelf", "-d", binary))) - own
    depends = {entry.split()[0] for entry in re.split(r"[,|] *", field(package, "Depends"))}
    assert "libavcodec59" in depends
    paths = dict(re.findall(r"(\S+) => (/\S+)", run("ldd", root / "usr/bin/vireo")))
    for library in needed - {"ld-linux-x86-64.so.2"}:
        path = paths[library]
        owners = run("dpkg", "-S", f"*/{library}")
        owning = {line.split(":")[0] for line in owners.splitlines() if not line.startswith("diversion")}
        assert owning & depends, f"{path} of {owning} is not in {depends}"


def test_program_and_plugins_run_from_there(root, picture):
    vireo = root / "usr/bin/vireo"
    assert f"module {root}/usr/lib/vireo/VireoFiltersMetaPlugin.vrmp" in run(vireo, "--version", environment=BARE)
    result = picture.with_name("out.png")
    run(vireo, "render", picture, result, "-f", "Horizontal Flip", environment=BARE)
    run(vireo, "render", picture, picture.with_name("preset.png"), "--preset", "vhs", environment=BARE)
    with Image.open(picture) as before, Image.open(result) as after:
        assert numpy.array_equal(numpy.asarray(after)[..., :3], numpy.asarray(before)[:, ::-1])
    flipped = picture.with_name("frei0r.png")
    run("ffmpeg", "-v", "error", "-i", picture, "-vf", "frei0r=vireo_horizontal_flip", flipped,
        environment={**BARE, "FREI0R_PATH": str(root / "usr/lib/frei0r-1")})
    with Image.open(flipped) as after, Image.open(result) as ours:
        assert numpy.array_equal(numpy.asarray(after.convert("RGB")), numpy.asarray(ours.convert("RGB")))


def test_the_version_is_the_programs(package, root):
    assert run(root / "usr/bin/vireo", "--version").startswith(f"vireo {field(package, 'Version')},")
    assert "vireo.invalid" in field(package, "Maintainer")
    changes = (root / "usr/share/doc/vireo-filters/CHANGELOG.md").read_text()
    assert f"## [{field(package, 'Version')}]" in changes
