#!/bin/bash
# SPDX-License-Identifier: MIT
# Makes the screenshots of the settings dialogs under Wine. Needs the windows build and what ./check installs.
#   docs/screenshots/make.sh [PICTURE [LANGUAGE...]]   the languages are en de ja unless named; all are looked at
#                                                      in build/screenshots
set -euo pipefail
photograph=build/pictures/source.png  # What docs/pictures/make.sh leaves.
picture=$(realpath "${1:-$(dirname "$0")/../../$photograph}")
languages=("${@:2}")
((${#languages[@]})) || languages=(en de ja)
cd "$(dirname "$0")/../.."
work=build/screenshots
rm -rf "$work"
mkdir -p "$work"

if [[ -f $picture ]]; then
    input=(-i "$picture")
elif (($#)); then
    echo "make.sh: there is no $1" >&2
    exit 1
else
    input=(-f lavfi -i mandelbrot=start_scale=0.01)
fi
ffmpeg -v error -y "${input[@]}" -frames:v 1 -pix_fmt bgr24 \
    -vf scale=640:480:force_original_aspect_ratio=increase,crop=640:480 "$work/picture.bmp"
tests/windows/with-wine wine build/windows/bin/dialog_screenshots.exe "$work/picture.bmp" "$work"

/usr/bin/python3 - "$work" docs/screenshots "${languages[@]}" <<'END'
import pathlib
import sys

from PIL import Image

source, target = map(pathlib.Path, sys.argv[1:3])
for language in sys.argv[3:]:
    for file in source.glob(f"*-{language}.bmp"):
        Image.open(file).convert("RGB").save(target / file.with_suffix(".png").name, optimize=True)
END
