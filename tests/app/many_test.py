# SPDX-License-Identifier: MIT
"""Many inputs of one command: folders, names, what is there already, pictures side by side."""
import json
import os
import signal
import subprocess
import time

import pytest
from PIL import Image

from conftest import PROGRAM
from media_support import clip

CHAIN = ("-f", "Solarize")


def tree(folder):
    return sorted(path.relative_to(folder).as_posix() for path in folder.rglob("*") if path.is_file())


@pytest.fixture
def photos(tmp_path, picture):
    for name in ("photos/a.png", "photos/b.JPG", "photos/deep/er/c.png", "photos/.hidden/d.png", "photos/.e.png"):
        (tmp_path / name).parent.mkdir(parents=True, exist_ok=True)
        Image.open(picture).save(tmp_path / name)
    (tmp_path / "photos/notes.txt").write_text("none of these")
    (tmp_path / "photos/deep/round").symlink_to("..")
    return tmp_path / "photos"


def test_folders_keep_their_tree(vireo, tmp_path, photos):
    said = vireo("render", "photos", "in.png", "--to", "flat", *CHAIN).stderr.decode()
    assert tree(tmp_path / "flat") == ["a.png", "b.JPG", "in.png"]
    assert "1 file that is no picture or video was passed over: photos/notes.txt.\n" in said
    assert said.endswith("3 done, 0 skipped, 0 failed.\n")
    # What an earlier run wrote into the folder itself is no input of the next.
    inner = ("render", "photos", "--recursive", "--to", "photos/done", *CHAIN)
    vireo(*inner)
    assert tree(photos / "done") == ["a.png", "b.JPG", "deep/er/c.png"]
    vireo(*inner, "--overwrite")
    assert tree(photos / "done") == ["a.png", "b.JPG", "deep/er/c.png"]
    beside = ("render", "photos", "--to", "photos", "--name", "{stem}-new{ext}", *CHAIN)
    vireo(*beside)
    assert vireo(*beside, "--skip-existing").stderr.decode().endswith("0 done, 2 skipped, 0 failed.\n")
    assert [name for name in tree(photos) if "-new" in name] == ["a-new.png", "b-new.JPG"]


@pytest.mark.parametrize("name, names", [
    ("{stem}-solar{ext}", ["a-solar.png", "b-solar.JPG", "deep/er/c-solar.png"]),
    ("{name}.webp", ["a.png.webp", "b.JPG.webp", "deep/er/c.png.webp"]),
    ("{{{number}}}{ext}", ["deep/er/{3}.png", "{1}.png", "{2}.JPG"]),
])
def test_names_have_fields(vireo, tmp_path, photos, name, names):
    vireo("render", "photos", "--recursive", "--to", "out", "--name", name, *CHAIN)
    assert tree(tmp_path / "out") == names


@pytest.mark.parametrize("words, said", [
    (("photos", "--to", "out", "--name", "{steam}.png"), "{steam}"),
    (("photos", "--to", "out", "--name", "{stem"), "brace"),
    (("photos", "--to", "out", "--name", "stem}"), "brace"),
    (("photos", "--to", "out", "--name", "../{name}"), "--to"),
    (("photos", "--to", "out", "--name", "all.png"), "two inputs would be written to out/all.png"),
    (("photos/a.png", "photos/b.JPG", "--to", "photos", "--name", "b.JPG"), "two inputs"),
    (("photos/a.png", "photos/a-1.png", "--to", "photos", "--name", "{stem}-1.png", "--overwrite"), "is an input"),
    (("photos", "out.png"), "is a folder"),
    (("photos/deep", "--to", "out"), "--recursive"),
    (("in.png", "out.png", "--name", "{stem}.png"), "--to"),
    (("in.png", "out.png", "--skip-existing", "--overwrite"), "--overwrite"),
])
def test_what_makes_no_sense_is_refused_before_any_work(vireo, tmp_path, photos, words, said):
    (photos / "a-1.png").write_bytes((photos / "a.png").read_bytes())
    before = tree(tmp_path)
    assert said in vireo.error("render", *words, *CHAIN)
    assert tree(tmp_path) == before


def test_what_is_there_is_skipped(vireo, tmp_path, photos):
    (photos / "bad.png").write_text("no picture")
    command = ("render", "photos", "--to", "out", *CHAIN, "--skip-existing", "--json")
    vireo(*command, status=1)
    (tmp_path / "out/b.JPG").unlink()
    kept = (tmp_path / "out/a.png").stat().st_mtime_ns
    completed = vireo(*command, status=1)
    report = json.loads(completed.stdout)
    assert report["summary"] == {"planned": 3, "done": 1, "skipped": 1, "failed": 1, "passedOver": ["photos/notes.txt"]}
    assert [render["skipped"] for render in report["renders"]] == [True, False, False]
    lines = completed.stderr.decode().splitlines()
    assert [line.split()[1] for line in lines[:3]] == ["out/a.png", "out/b.JPG:", "photos/bad.png:"]
    assert lines[-1] == "vireo: 1 done, 1 skipped, 1 failed: photos/bad.png."
    assert (tmp_path / "out/a.png").stat().st_mtime_ns == kept and (tmp_path / "out/b.JPG").exists()


def test_a_sequence_is_there_when_all_its_numbers_are(vireo, tmp_path):
    clip(tmp_path, "in.mkv", "-c:v", "ffv1")
    command = ("render", "in.mkv", "out%02d.png", "--frames", "5-9", *CHAIN, "--skip-existing")
    vireo(*command)
    assert "skipped" in vireo(*command).stderr.decode()
    (tmp_path / "out08.png").unlink()
    (tmp_path / "out11.png").write_text("of another")
    assert "out06.png exists" in vireo.error(*command, status=1)


def test_pictures_side_by_side_are_told_in_order_and_are_the_same(vireo, tmp_path, photos):
    many = tmp_path / "many"
    many.mkdir()
    for number in range(40):
        Image.open(photos / "a.png").rotate(number).resize((800, 600) if number % 4 == 0 else (8, 8)).save(many / f"{number:02d}.png")
    (many / "11.png").write_text("no picture")
    clip(many, "20.mkv", "-c:v", "ffv1")
    chain = ("-f", "Ghosting", "-f", "Camera Blur:percent blur=10")
    said = []
    for jobs in (1, 8):
        completed = vireo("render", "many", "--to", f"out{jobs}", "--jobs", jobs, *chain, status=1)
        said.append([line.split(":")[1].strip().split("/")[-1] for line in completed.stderr.decode().splitlines()])
    assert said[0] == said[1] and said[0][:20] == [f"{number:02d}.png" for number in range(20)] and said[0][20] == "20.mkv"
    assert tree(tmp_path / "out1") == tree(tmp_path / "out8") and len(tree(tmp_path / "out8")) == 40
    for name in tree(tmp_path / "out1"):
        assert (tmp_path / "out1" / name).read_bytes() == (tmp_path / "out8" / name).read_bytes(), name


def test_an_interruption_stops_all_and_leaves_nothing_half(tmp_path, photos):
    many = tmp_path / "many"
    many.mkdir()
    Image.open(photos / "a.png").resize((1600, 1200)).save(many / "00.png", compress_level=1)
    for number in range(1, 40):
        os.link(many / "00.png", many / f"{number:02d}.png")
    process = subprocess.Popen([PROGRAM, "render", "many", "--to", "out", "--jobs", "4", "-f", "Camera Blur:percent blur=100"],
                               cwd=tmp_path, stderr=subprocess.PIPE)
    while not (tmp_path / "out").is_dir() or len(list((tmp_path / "out").glob("*.png"))) < 4:
        time.sleep(0.01)
    process.send_signal(signal.SIGUSR1)
    time.sleep(0.1)
    process.send_signal(signal.SIGINT)
    said = process.communicate(timeout=60)[1].decode()
    assert process.returncode == 130
    assert said.count("interrupted") == 1 and " not rendered, 0 failed.\n" in said
    assert 0 < len(os.listdir(tmp_path / "out")) < 40
    for name in os.listdir(tmp_path / "out"):
        Image.open(tmp_path / "out" / name).load()
