# SPDX-License-Identifier: MIT
"""The program of Windows writes the files of the native one, byte for byte, and says the same."""
import json
import os
import pathlib
import shutil
import subprocess

import numpy
import pytest
from PIL import Image

from conftest import PROGRAM
from media_support import IDENTITY, SMOOTH, VARIABLE, clip, ffmpeg

NATIVE = pathlib.Path(os.environ.get("VIREO_NATIVE_PROGRAM", ""))
MOVING = "testsrc2=s=96x64:r=25:d={seconds}"
LOOK = ["Ghosting", "Solarize:threshold=0@0s..200@2s, mix=80%"]
TALL = ", ".join(["a long way down"] * 8)

pytestmark = pytest.mark.skipif(not NATIVE.is_file(), reason="the native program is not built")


def lossless(source, output, **options):
    return {"input": source, "output": "made/" + output, "filter": LOOK, "encoder": "ffv1"} | options


JOBS = [
    # Sound, subtitles, chapters and tags beside the video; cuts, times, rates, fields, colours, alpha.
    lossless("sound.mkv", "sound.mkv"),
    lossless("sound.mkv", "cut.mov", frames="7-21", encoder="prores_ks"),
    lossless("sound.mkv", "time.mkv", start="0.3s", duration="0.5s"),
    lossless("sound.mkv", "converted.mkv", filter=["Edge Feather:amount=20"]),
    lossless("sound.mkv", "plain.y4m", encoder="wrapped_avframe"),
    lossless("sound.mkv", "small.avi", encoder="mpeg4", **{"no-audio": True}),
    lossless("sound.mkv", "x264.mp4", encoder="libx264", **{"encoder-option": ["threads=1"]}),
    lossless("own.mkv", "../own.mkv"),
    lossless("variable.mkv", "variable.mkv"),
    lossless("tagged.mp4", "tagged.mkv"),
    lossless("turned.mp4", "turned.mkv"),
    lossless("fields.mkv", "fields.mkv", deinterlace=True),
    lossless("deep.mkv", "deep.mkv", dither="none"),
    lossless("tagged.mp4", "prepared.mkv", crop="80:40:8:8", scale="64:-2", fps="12"),
    lossless("alpha.mov", "alpha.mkv"),
    lossless("alpha.mov", "alpha%02d.png", encoder="png"),
    lossless("in%03d.png", "out%03d.tif", encoder="tiff"),
    lossless("in%03d.png", "pictures.mkv"),
    lossless("deep.png", "deep.png", encoder="png"),
    lossless("turned.jpg", "turned.png", encoder="png"),
    # Names, also where they make a path that is too long for old programs.
    lossless("Über 東京.mkv", "Größe & 大阪.mkv", frames="0-3"),
    lossless("sound.mkv", f"{TALL}/{TALL}/out.mkv", frames="0-0"),
    # Damage, and what is refused.
    lossless("damaged.mkv", "damaged.mkv"),
    lossless("damaged.mkv", "strict.mkv", strict=True),
    lossless("damaged%d.png", "damaged%d.bmp", encoder="bmp"),
    lossless("missing.mkv", "refused0.mkv"),
    lossless("text.mp4", "refused1.mkv"),
    lossless("empty.png", "refused.png", encoder="png"),
    lossless("sound.mkv", "no folder/refused.mkv"),
    lossless("sound.mkv", "refused.strange"),
    lossless("sound.mkv", "refused2.mkv", encoder="nothing"),
    lossless("sound.mkv", "refused3.mkv", frames="90-99"),
]


def make_inputs(folder, pixels):
    (folder / "s.srt").write_text("1\n00:00:00,200 --> 00:00:00,800\nHello\n")
    (folder / "chapters.txt").write_text(";FFMETADATA1\ntitle=Tïtle\n[CHAPTER]\nTIMEBASE=1/10\nSTART=0\nEND=5\ntitle=One\n")
    clip(folder, "sound.mkv", "-map", "0:v", "-map", "1:a", "-map", "2:s", "-map_metadata", "3", "-c:v", "libx264", "-c:a", "aac",
         "-c:s", "srt", source=MOVING, sound=True, inputs=("-i", "s.srt", "-i", "chapters.txt"))
    clip(folder, "variable.mkv", *VARIABLE, "-c:v", "libx264", source=MOVING)
    clip(folder, "tagged.mp4", "-c:v", "libx264", "-pix_fmt", "yuv420p", "-color_range", "pc", "-colorspace", "bt2020nc",
         "-color_primaries", "bt2020", "-color_trc", "bt2020-10", source=MOVING, seconds=0.4)
    ffmpeg("-i", "tagged.mp4", "-c", "copy", "-metadata:s:v", "rotate=90", "turned.mp4", cwd=folder)
    clip(folder, "fields.mkv", "-c:v", "libx264", "-flags", "+ildct", "-x264-params", "tff=1", "-vf", "setfield=tff", source=MOVING,
         seconds=0.4)
    clip(folder, "deep.mkv", "-c:v", "ffv1", "-pix_fmt", "yuv422p10le", source=SMOOTH, seconds=0.2)
    clip(folder, "alpha.mov", "-c:v", "qtrle", "-pix_fmt", "argb", seconds=0.12,
         source=MOVING + ",format=rgba,geq=r='r(X,Y)':g='g(X,Y)':b='b(X,Y)':a='255*X/W'")
    for name in ("own.mkv", "Über 東京.mkv"):
        shutil.copy(folder / "sound.mkv", folder / name)
    clip(folder, "damaged.mkv", "-c:v", "libx264", "-g", "5", "-bf", "0", source="testsrc2=s=320x240:r=25:d={seconds}")
    data = bytearray((folder / "damaged.mkv").read_bytes())
    for at in range(len(data) // 2, len(data) // 2 + 1500, 7):
        data[at] ^= 0x5A
    (folder / "damaged.mkv").write_bytes(data)
    for number in range(1, 5):
        Image.fromarray(numpy.roll(pixels, number, 1)).save(folder / f"in{number:03d}.png")
        Image.fromarray(pixels).save(folder / f"damaged{number}.png")
    (folder / "damaged2.png").write_bytes(b"rubbish")
    (folder / "damaged3.png").unlink()
    ffmpeg("-i", "in001.png", "-pix_fmt", "rgba64be", "deep.png", cwd=folder)
    exif = Image.Exif()
    exif[0x0112] = 6
    Image.fromarray(pixels).save(folder / "turned.jpg", exif=exif)
    (folder / "text.mp4").write_text("no clip at all")
    (folder / "empty.png").touch()
    return folder


@pytest.fixture(scope="module")
def inputs(tmp_path_factory, pixels):
    return make_inputs(tmp_path_factory.mktemp("inputs"), pixels)


@pytest.fixture
def folders(tmp_path, inputs):
    """A folder for each program, with the inputs."""
    for program in ("native", "windows"):
        shutil.copytree(inputs, tmp_path / program)
    return {NATIVE: tmp_path / "native", PROGRAM: tmp_path / "windows"}


def run(program, folder, *arguments, **options):
    return subprocess.run([program, *arguments], cwd=folder, capture_output=True, timeout=200, **options)


def told(text):
    """What was said, with one kind of slash and without what is never the same."""
    report = json.loads(text.replace(b"\\\\", b"/"))
    for job in report["jobs"]:
        for render in job.get("renders", []):
            render.pop("seconds", None)
    report.pop("seconds", None)
    return report


def contents(folder):
    return {path.relative_to(folder).as_posix(): path.read_bytes() for path in folder.rglob("*") if path.is_file()}


def test_files_and_words_are_the_same(folders):
    reports, made = [], []
    for program, folder in folders.items():
        (folder / "jobs.json").write_text(json.dumps(JOBS))
        (folder / f"made/{TALL}/{TALL}").mkdir(parents=True)
        result = run(program, folder, "batch", "jobs.json", "--json", "--overwrite")
        assert result.returncode == 1, result.stderr.decode()
        reports.append(told(result.stdout))
        made.append(contents(folder))
    native, windows = made
    assert native.keys() == windows.keys()
    assert [name for name in native if native[name] != windows[name]] == []
    assert {"made/" + name for name in ("sound.mkv", "turned.mkv", "alpha03.png", "out004.tif", "Größe & 大阪.mkv",
                                        f"{TALL}/{TALL}/out.mkv")} <= native.keys()
    for first, second in zip(*(report["jobs"] for report in reports), strict=True):
        assert first == second
    assert reports[0] == reports[1]
