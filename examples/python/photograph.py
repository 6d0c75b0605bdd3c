#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A photograph through a chain, read and written by Pillow: photograph.py IN OUT FILTER..."""
import sys

import numpy
from PIL import Image, ImageOps

import vireo


def main(source: str, target: str, *filters: str) -> None:
    chain = vireo.Chain(*filters)
    with Image.open(source) as opened:
        photograph = ImageOps.exif_transpose(opened)
        frame = numpy.asarray(photograph.convert("RGBA" if "A" in photograph.getbands() else "RGB"))
    Image.fromarray(chain(frame)).save(target)


if __name__ == "__main__":
    main(*sys.argv[1:])
