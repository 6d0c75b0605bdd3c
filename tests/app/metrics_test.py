# SPDX-License-Identifier: MIT
"""vireo compare --metrics: PSNR as FFmpeg's filter has it, SSIM as its formula says."""
import json
import re
import subprocess

import numpy
import pytest
from PIL import Image

from conftest import read_picture
from media_support import clip, ffmpeg

BLUR = ("-f", "Camera Blur:percent blur=20")
LUMA = numpy.array([0.299, 0.587, 0.114])


def metrics(vireo, *arguments):
    return json.loads(vireo("compare", *arguments, "--metrics", "--json").stdout)


def similarity(one, other, whole=255):
    """The plain formula: every window by itself."""
    x = numpy.arange(11) - 5
    weights = numpy.exp(-(x[:, None] ** 2 + x ** 2) / (2 * 1.5 ** 2))
    weights /= weights.sum()
    views = [numpy.lib.stride_tricks.sliding_window_view(picture @ LUMA, (11, 11)) for picture in (one, other)]
    a, b = ((view * weights).sum(axis=(2, 3)) for view in views)
    deviations = [view - mean[..., None, None] for view, mean in zip(views, (a, b))]
    aa, bb, ab = ((weights * deviations[i] * deviations[j]).sum(axis=(2, 3)) for i, j in ((0, 0), (1, 1), (0, 1)))
    c1, c2 = (0.01 * whole) ** 2, (0.03 * whole) ** 2
    return ((2 * a * b + c1) * (2 * ab + c2) / ((a * a + b * b + c1) * (aa + bb + c2))).mean()


def test_psnr_is_that_of_ffmpeg(vireo):
    clip(vireo.folder, "in.mkv", "-c:v", "ffv1", "-pix_fmt", "bgr0", "-vf", "hue=s=3", seconds=0.4)
    report = metrics(vireo, "in.mkv", *BLUR)
    vireo("render", "in.mkv", "out.mkv", *BLUR, "--encoder", "ffv1")
    completed = subprocess.run(
        ["ffmpeg", "-hide_banner", "-i", "in.mkv", "-i", "out.mkv", "-lavfi",
         "[0]format=gbrp[a];[1]format=gbrp[b];[a][b]psnr=stats_file=-", "-f", "null", "-"], cwd=vireo.folder, check=True, capture_output=True)
    lines = completed.stdout.decode().splitlines()
    assert len(lines) == len(report["frames"]) == 10
    for line, frame in zip(lines, report["frames"]):
        theirs = {name: float(value) for name, value in re.findall(r"psnr_(\w+):([\d.]+)", line)}
        for ours, name in (("psnr", "avg"), ("red", "r"), ("green", "g"), ("blue", "b")):
            assert frame[ours] == pytest.approx(theirs[name], abs=0.006), (line, frame)
        assert frame["alpha"] is None
    average = float(re.search(r"average:([\d.]+)", completed.stderr.decode()).group(1))
    assert report["all"]["psnr"] == pytest.approx(average, abs=1e-5)
    assert report["all"]["ssim"] == pytest.approx(numpy.mean([frame["ssim"] for frame in report["frames"]]))


def test_ssim_is_that_of_its_formula(vireo, picture, pixels):
    for settings in (BLUR, ("-f", "Solarize:threshold=200"), ("-f", "Horizontal Flip")):
        report = metrics(vireo, "in.png", "both.png", *settings, "--overwrite")
        vireo("render", "in.png", "out.png", *settings, "--overwrite")
        expected = similarity(pixels.astype(float), read_picture(vireo.folder / "out.png")[..., :3].astype(float))
        assert report["frames"][0]["ssim"] == pytest.approx(expected, abs=1e-9)
        assert read_picture(vireo.folder / "both.png").shape[1] > 2 * pixels.shape[1]


def test_deep_pictures_and_what_has_no_value(vireo, pixels):
    # A flip keeps sixteen bits; twelve of them are too fine for eight.
    clip(vireo.folder, "in.mkv", "-c:v", "ffv1", "-pix_fmt", "gbrp12le", seconds=0.1)
    deep = metrics(vireo, "in.mkv", "-f", "Horizontal Flip", "--frames", "1-1")
    assert [frame["frame"] for frame in deep["frames"]] == [1] and deep["all"]["alpha"] is None
    raw = ffmpeg("-i", "in.mkv", "-f", "rawvideo", "-pix_fmt", "gbrp12le", "-", cwd=vireo.folder)
    green, blue, red = numpy.frombuffer(raw, "<u2").reshape(-1, 3, 120, 160)[1].astype(float) / 4095
    for name, channel in (("red", red), ("green", green), ("blue", blue)):
        expected = -10 * numpy.log10(((channel - channel[:, ::-1]) ** 2).mean())
        assert deep["all"][name] == pytest.approx(expected, abs=0.001)
    colours = numpy.dstack([red, green, blue])
    assert deep["all"]["ssim"] == pytest.approx(similarity(colours, colours[:, ::-1], whole=1), abs=1e-4)

    Image.fromarray(pixels[:10, :20]).save(vireo.folder / "small.png")
    assert metrics(vireo, "small.png", "-f", "Solarize:threshold=0")["all"] == dict.fromkeys(
        ["psnr", "red", "green", "blue", "alpha", "ssim"])
    text = vireo("compare", "small.png", "-f", "Edge Feather:amount=30", "--metrics").stdout.decode().splitlines()
    assert re.fullmatch(r"0 +inf +inf +inf +inf +[\d.]+ +-", text[1]) and text[2].startswith("all ")
    assert not list(vireo.folder.glob("*-compared*"))
    assert "not both" in vireo.error("compare", "small.png", "-", "-f", "Solarize", "--metrics")
