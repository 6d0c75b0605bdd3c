# SPDX-License-Identifier: MIT
"""The installer for Windows, without a question asked: what it brings, and that it takes everything away again."""
import os
import pathlib
import shlex
import shutil
import subprocess
import time

import numpy
import pytest

from conftest import pixels, run

EMULATOR = shlex.split(os.environ.get("VIREO_EMULATOR", "tests/windows/under-wine"))
PREFIX = pathlib.Path(os.environ.get("VIREO_WINE_PREFIX", "/nonexistent"))
ENVIRONMENT = {**os.environ, "LC_ALL": "C.UTF-8"}
FOLDER = r"C:\vireo test\Program Files (é) & more\Vireo"
INSTALLED = PREFIX / "drive_c" / FOLDER.removeprefix("C:\\").replace("\\", "/")

# The last word, which has no quotation marks round its blanks.
TARGET = f"/D={FOLDER}".split(" ")

# Longer than the strings of the installer's language, with a variable, and an entry that begins like ours.
SEARCH_PATH = r"%USERPROFILE%\bin;" + ";".join(rf"C:\tools\number {i}" for i in range(120)) + rf";{FOLDER} 2"
PATH_KEY = r"HKCU\Environment"

# Which Wine makes when they are first needed.
KEYS_OF_EVERY_USER = [r"HKCU\Software\Classes", r"HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall"]

pytestmark = pytest.mark.skipif(not shutil.which("makensis"), reason="there is no NSIS")


def windows(*command):
    # Wine's own processes that a first window starts would keep a pipe open.
    subprocess.run([*EMULATOR, *map(str, command)], env=ENVIRONMENT, check=True, timeout=100,
                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def search_path():
    completed = subprocess.run([*EMULATOR, "reg", "query", PATH_KEY, "/v", "Path"], capture_output=True, timeout=60, env=ENVIRONMENT)
    if completed.returncode != 0:
        return None
    kind, value = completed.stdout.decode("cp850").strip().splitlines()[-1].split(maxsplit=2)[1:]
    return kind, value.rstrip("\r")


def registry(folder):
    """By keys, without those in which Wine keeps what a session asked of it and how consoles look."""
    windows("reg", "export", "HKCU", f"Z:{folder}/registry.reg", "/y")
    keys = (folder / "registry.reg").read_text(encoding="utf-16").split("\n\n")
    return sorted(key for key in keys if "\\Temporary System Parameters" not in key and "\\Console]" not in key)


def files():
    """Where programs are put and where users have theirs. Windows removes a running program's own copy later."""
    drive = PREFIX / "drive_c"
    return {path.relative_to(drive).as_posix() for top in ("users", "vireo test") for path in (drive / top).rglob("*")
            if "~nsu" not in path.as_posix()}


def uninstall():
    windows(f"{FOLDER}\\Uninstall.exe", "/S")
    # It works from a copy of itself, which nobody waits for.
    for _ in range(300):
        if not (INSTALLED / "Uninstall.exe").exists():
            break
        time.sleep(0.1)
    time.sleep(0.5)


@pytest.fixture
def setup(packages):
    (program,) = packages.glob("vireo-filters-*-setup.exe")
    windows("reg", "add", PATH_KEY, "/v", "Path", "/t", "REG_EXPAND_SZ", "/d", SEARCH_PATH, "/f")
    for key in KEYS_OF_EVERY_USER:
        windows("reg", "add", key, "/f")
    yield program
    if (INSTALLED / "Uninstall.exe").exists():  # the test failed
        uninstall()
    windows("reg", "delete", PATH_KEY, "/v", "Path", "/f")
    shutil.rmtree(PREFIX / "drive_c/vireo test", ignore_errors=True)


def test_installs_for_one_user_and_leaves_nothing(setup, packages, picture, tmp_path):
    before, files_before, path_before = registry(tmp_path), files(), search_path()
    assert path_before == ("REG_EXPAND_SZ", SEARCH_PATH)

    windows(setup, "/S", "/PATH", *TARGET)
    names = {path.relative_to(INSTALLED).as_posix() for path in INSTALLED.rglob("*") if path.is_file()}
    assert len([name for name in names if name.startswith("frei0r-1/vireo_")]) == 22
    assert {"vireo.exe", "VireoPreview.exe", "VireoFrei0r.dll", "Uninstall.exe", "licences/GPL-2.0-or-later.txt"} <= names
    assert search_path() == ("REG_EXPAND_SZ", f"{SEARCH_PATH};{FOLDER}")
    during = registry(tmp_path)
    doubled = FOLDER.replace("\\", "\\\\")
    for value in (rf'@="\"{doubled}\\VireoPreview.exe\" \"%1\""', rf'"QuietUninstallString"="\"{doubled}\\Uninstall.exe\" /S"',
                  rf'"Folder"="{doubled}"', '@="Open with Vireo preview"'):
        assert value in "\n".join(during), value
    shortcuts = [name for name in files() - files_before if name.endswith(".lnk")]
    assert len(shortcuts) == 3

    # From anywhere. By its name alone Wine does not find it: it leaves out a path as long as this one.
    result = picture.with_name("out.png")
    run(*EMULATOR, f"{FOLDER}\\vireo.exe", "render", "in.png", "out.png", "-f", "Horizontal Flip", cwd=tmp_path,
        environment=ENVIRONMENT)
    assert numpy.array_equal(pixels(result), pixels(picture)[:, ::-1])

    # Once more over it, as for a newer version: what was chosen stays, and so does what is not ours.
    (INSTALLED / "notes.txt").write_text("mine")
    (INSTALLED / "frei0r-1/vireo_solarize.dll").unlink()
    windows(setup, "/S", *TARGET)
    assert search_path() == ("REG_EXPAND_SZ", f"{SEARCH_PATH};{FOLDER}")
    assert names == {path.relative_to(INSTALLED).as_posix() for path in INSTALLED.rglob("*") if path.is_file()} - {"notes.txt"}

    uninstall()
    assert [path.name for path in INSTALLED.rglob("*")] == ["notes.txt"]
    shutil.rmtree(PREFIX / "drive_c/vireo test")
    assert search_path() == path_before
    assert files() == files_before
    after = registry(tmp_path)
    assert set(after) ^ set(before) == set()
