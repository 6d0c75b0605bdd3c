#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes the page's samples beside this script: a photograph, a drawing with transparency and a clip.

The photographs are in the public domain (US Department of Agriculture; Derek Jensen); a Debian package carries them.
Needs ffmpeg, numpy and Pillow.
"""

import subprocess
import tempfile
from pathlib import Path

import numpy as np
from PIL import Image

HERE = Path(__file__).parent
WIDTH, HEIGHT = 960, 720

# What faces are made of, from light to dark.
SKIN = [(255, 224, 196), (241, 194, 160), (224, 172, 130), (198, 134, 92), (141, 85, 54), (92, 56, 40)]


def shape(distance, softness=1.2):
    """Coverage of a shape from the signed distance to its edge, in pixels."""
    return np.clip(0.5 - distance / softness, 0, 1)


def ellipse(x, y, center, radii, angle=0.0, softness=1.2):
    turn = np.deg2rad(angle)
    u, v = x - center[0], y - center[1]
    u, v = u * np.cos(turn) + v * np.sin(turn), v * np.cos(turn) - u * np.sin(turn)
    length = np.hypot(u / radii[0], v / radii[1])
    return shape((length - 1) * min(radii), softness)


def half_plane(x, y, point, direction):
    return shape((x - point[0]) * direction[0] + (y - point[1]) * direction[1])


def gradient(x, y, begin, end, first, last):
    """Colours that go over from one point to another."""
    step = np.array(end) - np.array(begin)
    share = np.clip(((x - begin[0]) * step[0] + (y - begin[1]) * step[1]) / (step @ step), 0, 1)[..., None]
    return np.array(first) * (1 - share) + np.array(last) * share


class Drawing:
    """Layers over a transparent ground, alpha straight."""

    def __init__(self):
        self.color = np.zeros((HEIGHT, WIDTH, 3))
        self.alpha = np.zeros((HEIGHT, WIDTH))

    def lay(self, coverage, color):
        alpha = coverage + self.alpha * (1 - coverage)
        weight = np.where(alpha > 0, coverage / np.maximum(alpha, 1e-9), 0)[..., None]
        self.color = self.color * (1 - weight) + np.broadcast_to(color, self.color.shape) * weight
        self.alpha = alpha

    def image(self):
        pixels = np.dstack([self.color, self.alpha * 255])
        return Image.fromarray((pixels + 0.5).astype(np.uint8), "RGBA")


def bird(drawing, x, y):
    """A small green songbird that looks to the right."""
    body = ellipse(x, y, (430, 350), (190, 128), -18)
    head = ellipse(x, y, (592, 232), (92, 84), -8)
    tail = ellipse(x, y, (216, 452), (150, 30), -24) * half_plane(x, y, (300, 0), (1, 0))
    drawing.lay(tail, gradient(x, y, (90, 0), (300, 0), (52, 78, 50), (104, 134, 74)))
    drawing.lay(shape(np.abs(x - 455) - 4) * shape(np.abs(y - 500) - 62), (96, 84, 92))
    drawing.lay(shape(np.abs(x - 505) - 4) * shape(np.abs(y - 494) - 66), (96, 84, 92))
    drawing.lay(np.maximum(body, head), gradient(x, y, (400, 190), (470, 470), (112, 146, 78), (246, 240, 196)))
    wing = ellipse(x, y, (362, 352), (166, 70), -30)
    drawing.lay(wing, gradient(x, y, (300, 300), (400, 430), (120, 152, 84), (54, 76, 58)))
    for i in range(4):
        feather = ellipse(x, y, (318 + 22 * i, 392 - 15 * i), (110, 4), -34, 2.5) * wing
        drawing.lay(0.55 * feather, (228, 232, 190))
    drawing.lay(ellipse(x, y, (604, 204), (66, 13), -6, 4) * head, (248, 246, 226))
    drawing.lay(ellipse(x, y, (624, 226), (15, 15)), (30, 24, 28))
    drawing.lay(ellipse(x, y, (629, 221), (4.5, 4.5)), (255, 255, 255))
    beak = half_plane(x, y, (672, 214), (0.414, -0.910)) * half_plane(x, y, (672, 262), (0.263, 0.965))
    drawing.lay(beak * half_plane(x, y, (670, 0), (-1, 0)), gradient(x, y, (0, 222), (0, 262), (120, 116, 124), (58, 56, 66)))


def cut_out():
    y, x = np.mgrid[0:HEIGHT, 0:WIDTH] + 0.5
    drawing = Drawing()
    drawing.lay(0.75 * ellipse(x, y, (640, 250), (250, 210), 0, 260), gradient(x, y, (400, 0), (900, 500), (255, 214, 120), (236, 120, 132)))
    drawing.lay(ellipse(x, y, (470, 566), (430, 17), 2), gradient(x, y, (0, 545), (0, 590), (150, 112, 84), (72, 50, 42)))
    for i, (at, turn) in enumerate([(742, -30), (800, 24), (866, -22)]):
        drawing.lay(0.9 * ellipse(x, y, (at, 540 + 44 * (i % 2)), (56, 20), turn), gradient(x, y, (at - 50, 0), (at + 50, 0), (64, 116, 66), (168, 206, 106)))
    bird(drawing, x, y)
    for i, tone in enumerate(SKIN):
        drawing.lay(ellipse(x, y, (230 + 100 * i, 660), (36, 36)), tone)
        drawing.lay(0.45 * ellipse(x, y, (219 + 100 * i, 648), (13, 10), -30, 16), (255, 255, 255))
    return drawing.image()


def flying_bird():
    y, x = np.mgrid[0:HEIGHT, 0:WIDTH] + 0.5
    drawing = Drawing()
    bird(drawing, x, y)
    return drawing.image().crop((60, 130, 760, 580)).resize((210, 135), Image.LANCZOS)


def main():
    with tempfile.TemporaryDirectory() as folder:
        work = Path(folder)

        def run(*command):
            subprocess.run(command, cwd=work, check=True, stdout=subprocess.DEVNULL)

        run("apt-get", "download", "-qq", "palapeli-data")
        run("dpkg-deb", "-x", next(work.glob("palapeli-data_*.deb")).name, ".")
        photos = work / "usr/share/palapeli/collection"
        cut_out().save(HERE / "cutout.png", optimize=True)
        flying_bird().save(work / "bird.png")
        run("ffmpeg", "-v", "error", "-y", "-i", photos / "citrus-fruits.jpg",
            "-vf", "scale=1280:-2:flags=lanczos", "-q:v", "5", "-bitexact", HERE / "fruit.jpg")
        run("ffmpeg", "-v", "error", "-y", "-loop", "1", "-i", photos / "cincinnati-bridge.jpg",
            "-loop", "1", "-i", "bird.png", "-filter_complex",
            "[0]scale=800:-2:flags=lanczos,crop=640:360:x='60+t*20':y=60[v];"
            "[v][1]overlay=x='-210+t*290':y='60+34*sin(t*5)':shortest=1,format=yuv420p",
            "-t", "3", "-r", "25", "-c:v", "libx264", "-crf", "30", "-preset", "veryslow",
            "-movflags", "+faststart", "-bitexact", HERE / "clip.mp4")


if __name__ == "__main__":
    main()
