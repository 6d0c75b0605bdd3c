#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Makes the picture of OBS with the filter on. Needs the linux build and what ./check --long installs.

obs.py [FILE]   obs.png beside this file unless named
"""
import io
import pathlib
import subprocess
import sys
import tempfile
import time

from PIL import Image

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/bridges/obs"))
from program import HEIGHT, WIDTH, Display, Obs

FILTERS = ["ColorBalance", "Solarize", "AlphaGlow"]


def main():
    target = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).with_name("obs.png"))
    with tempfile.TemporaryDirectory() as folder, Display() as display:
        picture = pathlib.Path(folder, "picture.png")
        subprocess.run(["ffmpeg", "-v", "error", "-i", ROOT / "bridges/web/samples/fruit.jpg", "-vf",
                        f"scale={WIDTH}:{HEIGHT}:force_original_aspect_ratio=increase,crop={WIDTH}:{HEIGHT}", picture],
                       check=True)
        obs = Obs(pathlib.Path(folder, "home"), display)
        try:
            obs("CreateInput", sceneName="Scene", inputName="Fruit", inputKind="image_source",
                inputSettings={"file": str(picture)})
            obs.add_filter("Fruit", filters=[{"value": name} for name in FILTERS], **{
                "1.ColorBalance.Red": 120, "1.ColorBalance.Blue": 70, "2.Solarize.Threshold": 72})
            obs("OpenInputFiltersDialog", inputName="Fruit")
            time.sleep(3)
            shot = subprocess.run(["import", "-display", display, "-window", "root", "-trim", "+repage", "png:-"],
                                  check=True, capture_output=True).stdout
            Image.open(io.BytesIO(shot)).convert("RGB").quantize(255, dither=Image.Dither.NONE).save(target, optimize=True)
        finally:
            obs.end()


if __name__ == "__main__":
    main()
