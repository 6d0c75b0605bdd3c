# SPDX-License-Identifier: MIT
"""The Debian package, unpacked into an empty root."""
import re
import shutil

import numpy
import pytest

from conftest import BARE, only, packages_linked_to, pixels, run


@pytest.fixture(scope="module")
def package(packages):
    return only(packages, "vireo-filters_*.deb")


def beside(package, name):
    packages = list(package.parent.glob(f"{name}_*.deb"))
    if not packages:
        pytest.skip(f"built without {name}")
    return packages[0]


@pytest.fixture(scope="module")
def python_package(package):
    return beside(package, "python3-vireo")


@pytest.fixture(scope="module")
def obs_package(package):
    return beside(package, "vireo-obs")


@pytest.fixture(scope="module")
def gstreamer_package(package):
    return beside(package, "gstreamer1.0-vireo")


@pytest.fixture(scope="module")
def root(package, tmp_path_factory):
    return unpacked(package, tmp_path_factory.mktemp("root"))


def unpacked(package, root):
    run("dpkg-deb", "-x", package, root)
    return root


def files(root):
    return [path for path in root.rglob("*") if not path.is_dir()]


def field(package, name):
    return run("dpkg-deb", "-f", package, name).strip()


def elf_files(root):
    for path in sorted(root.rglob("*")):
        if path.is_file() and not path.is_symlink() and path.read_bytes()[:4] == b"\x7fELF":
            yield path


def test_files_lie_where_debian_has_them(package, root):
    assert len(list((root / "usr/lib/frei0r-1").glob("vireo_*.so"))) == 22
    bundle = root / "usr/OFX/Plugins/Vireo.ofx.bundle/Contents"
    processor = {"amd64": "x86-64", "arm64": "aarch64"}[field(package, "Architecture")]
    assert (bundle / f"Linux-{processor}/Vireo.ofx").is_file() and (bundle / "Info.plist").is_file()
    assert len(list((bundle / "Resources").glob("vireo.*.png"))) == 22
    shlibs = run("dpkg-deb", "--info", package, "shlibs")
    for library in ("libVireo", "libVireoHost"):
        assert (root / f"usr/lib/{library}.so.1").exists() and (root / f"usr/lib/{library}.so").is_symlink()
        assert f"{library} 1 vireo-filters" in shlibs
    for name in ("bin/vireo", "lib/vireo/VireoFiltersMetaPlugin.vrmp", "lib/pkgconfig/vireo-host.pc",
                 "lib/pkgconfig/vireo.pc", "include/vireo/host/vireo_host.h", "include/vireo/vireo.h", "share/doc/vireo-filters/copyright",
                 "share/kdenlive/effects/vireo_levels.xml", "share/man/man1/vireo.1", "share/vireo/presets/vhs.json",
                 "share/kdenlive/effects/vireo_mlt_levels.xml", "share/vireo/editors/kdenlive/ja/vireo_mlt_levels.xml",
                 "share/shotcut/qml/filters/vireo/meta_levels.qml", "bin/vireo-editors",
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
    # Who has MLT has its library.
    others = needed - {"ld-linux-x86-64.so.2", "ld-linux-aarch64.so.1", "libmlt-7.so.7"}
    owners = packages_linked_to("-S", *(f"*/{library}" for library in others)).splitlines()
    for library in others:
        owning = {line.split(":")[0] for line in owners if line.endswith(f"/{library}") and not line.startswith("diversion")}
        assert owning & depends, f"{library} of {owning} is not in {depends}"


def test_program_and_plugins_run_from_there(root, picture):
    vireo = root / "usr/bin/vireo"
    assert f"module {root}/usr/lib/vireo/VireoFiltersMetaPlugin.vrmp" in run(vireo, "--version", environment=BARE)
    results = [picture.with_name(name) for name in ("out.png", "frei0r.png", "preset.png")]
    run(vireo, "render", picture, results[0], "-f", "Horizontal Flip", environment=BARE)
    run("ffmpeg", "-v", "error", "-i", picture, "-vf", "frei0r=vireo_horizontal_flip", results[1],
        environment={**BARE, "FREI0R_PATH": str(root / "usr/lib/frei0r-1")})
    run(vireo, "render", picture, results[2], "--preset", "vhs", environment=BARE)
    assert numpy.array_equal(pixels(results[0]), pixels(picture)[:, ::-1])
    assert numpy.array_equal(pixels(results[1]), pixels(results[0]))


def test_the_version_is_the_programs(package, root):
    version = field(package, "Version")
    assert run(root / "usr/bin/vireo", "--version").startswith(f"vireo {version},")
    assert "vireo.invalid" in field(package, "Maintainer")
    assert f"## [{version}]" in (root / "usr/share/doc/vireo-filters/CHANGELOG.md").read_text()


def test_python_finds_the_filters_there(python_package, root, picture):
    assert field(python_package, "Depends").startswith(f"vireo-filters (= {field(python_package, 'Version')}), python3-numpy")
    place = unpacked(python_package, shutil.copytree(root, root.with_name("with-python"), symlinks=True))
    assert len(files(place)) == len(files(root)) + len(files(unpacked(python_package, root.with_name("alone"))))
    result = picture.with_name("python.png")
    use = "import sys, vireo; vireo.render(*sys.argv[1:], 'Horizontal Flip'); print(vireo._program.find_program())"
    packages = {**BARE, "PYTHONPATH": str(place / "usr/lib/python3/dist-packages"), "PYTHONDONTWRITEBYTECODE": "1"}
    assert run("/usr/bin/python3", "-c", use, picture, result, environment=packages) == f"{place}/usr/bin/vireo\n"
    assert numpy.array_equal(pixels(result), pixels(picture)[:, ::-1])


def test_obs_finds_the_plugin_and_it_the_filters(obs_package, root):
    depends = field(obs_package, "Depends")
    assert f"vireo-filters (= {field(obs_package, 'Version')})" in depends and "libobs0" in depends
    place = unpacked(obs_package, shutil.copytree(root, root.with_name("with-obs"), symlinks=True))
    (plugin,) = place.glob("usr/lib/*/obs-plugins/vireo.so")
    libraries = run("pkg-config", "--variable=libdir", "libobs").strip()
    assert plugin.parent == place / libraries[1:] / "obs-plugins"
    assert f"{place}/usr/lib/" in re.search(r"libVireo\.so\.1 => (\S+)", run("ldd", plugin))[1]
    data = place / "usr/share/obs/obs-plugins/vireo"
    assert (data / "vireo.effect").is_file() and len(list((data / "locale").iterdir())) == 7


def test_gstreamer_finds_the_filters_there(gstreamer_package, root, picture):
    depends = field(gstreamer_package, "Depends")
    assert f"vireo-filters (= {field(gstreamer_package, 'Version')})" in depends and "libgstreamer-plugins-base1.0-0" in depends
    place = unpacked(gstreamer_package, shutil.copytree(root, root.with_name("with-gstreamer"), symlinks=True))
    (plugin,) = place.rglob("libgstvireo.so")
    # The root is not the system's: the loader is told where the libraries are, and GStreamer where the plug-in is.
    environment = {**BARE, "GST_PLUGIN_PATH": str(plugin.parent), "GST_REGISTRY": str(picture.with_name("registry")),
                   "LD_LIBRARY_PATH": str(place / "usr/lib")}
    run("gst-launch-1.0", "-q", "filesrc", f"location={picture}", "!", "pngdec", "!", "vireohorizontalflip", "!", "pngenc", "!",
        "filesink", f"location={picture.with_name('gstreamer.png')}", environment=environment)
    assert numpy.array_equal(pixels(picture.with_name("gstreamer.png")), pixels(picture)[:, ::-1])
