#!/bin/bash
# SPDX-License-Identifier: MIT
# Makes the pictures of the documentation from three photographs in the public domain (citrus fruits: US Department of
# Agriculture; honey bee: John Severns; bridge: Derek Jensen), which a Debian package carries. Needs the linux build
# and what ./check installs.
set -euo pipefail
cd "$(dirname "$0")/../.."
work=build/pictures
photos=$work/unpacked/usr/share/palapeli/collection
mkdir -p "$work"

if [[ ! -d $photos ]]; then
    (cd "$work" && apt-get download -qq palapeli-data && dpkg-deb -x palapeli-data_*.deb unpacked)
fi

make() { ffmpeg -v error -y "$@"; }

fill=scale=480:320:force_original_aspect_ratio=increase:flags=lanczos,crop=480:320
make -i "$photos/citrus-fruits.jpg" -vf "$fill" "$work/citrus.png"
make -i "$photos/european-honey-bee.jpg" -vf "$fill" "$work/bee.png"
make -i "$photos/cincinnati-bridge.jpg" -vf "$fill" "$work/bridge.png"
make -f lavfi -i "color=gray:s=480x320,format=gray,geq='if(mod(floor(X/16)+floor(Y/16),2),150,200)'" \
    -frames:v 1 "$work/checkerboard.png"
# One slice alone, cut out along its rind.
inside='lt(hypot(X-146,Y-169),76)'
make -i "$photos/citrus-fruits.jpg" -vf "$fill,format=rgba,
    geq=r='if($inside,r(X,Y),255)':g='if($inside,g(X,Y),255)':b='if($inside,b(X,Y),255)':a='if($inside,255,0)',
    crop=220:220:36:59,scale=320:320,pad=480:320:80:0:color=white@0" "$work/slice.png"
# So few pixels that each is seen.
make -i "$work/bridge.png" -vf crop=120:80:120:20 "$work/jagged.png"
# Half a second that stands still, and the same that moves.
make -loop 1 -i "$work/bridge.png" -frames:v 40 -r 25 -c:v ffv1 -pix_fmt bgra "$work/bridge.mkv"
make -loop 1 -i "$photos/european-honey-bee.jpg" -frames:v 40 -r 25 -c:v ffv1 -pix_fmt bgra \
    -vf "scale=720:-2:flags=lanczos,crop=480:320:'min(n*9,240)':100" "$work/moving.mkv"

docs/pictures/drawings.py
docs/filters/generate.py build/linux/bin/vireo --pictures "$work"
# Small ones, for the table that notebooks show.
for picture in docs/filters/pictures/*-2.jpg; do
    make -i "$picture" -vf scale=144:-2:flags=lanczos -q:v 5 -bitexact \
        "bridges/python/vireo/pictures/$(basename "$picture" -2.jpg).jpg"
done

# Every ninth frame of a clip in which a value changes.
build/linux/bin/vireo render "$work/bridge.mkv" "$work/key.mkv" --overwrite --quiet --encoder ffv1 \
    -f "Solarize:threshold=0@0f..254@18f..0@36f"
make -i "$work/key.mkv" -vf "select=not(mod(n\,9)),scale=240:-2:flags=lanczos,tile=5x1:padding=4:color=white" \
    -frames:v 1 -q:v 5 -bitexact docs/pictures/key-frames.jpg
/usr/bin/python3 docs/pictures/sheet.py docs/pictures/sheet.jpg "$work/bridge.png"

mkdir -p "$work/presets"
for preset in engine/presets/*.json; do
    build/linux/bin/vireo render "$work/bee.png" "$work/presets/$(basename "$preset" .json).png" \
        --settings "$preset" --overwrite --quiet
done
/usr/bin/python3 docs/pictures/sheet.py docs/pictures/presets.jpg "$work/bee.png" "$work"/presets/*.png
build/linux/bin/vireo compare "$work/citrus.png" "$work/compare.png" --preset cyanotype --overwrite --quiet
make -i "$work/compare.png" -q:v 3 docs/pictures/compare.jpg

# 24 of 1024 dark levels, of which 8 bits have six: rounded, and dithered.
make -f lavfi -i "color=black:s=720x96:r=25:d=0.04,format=gbrp10le,geq=r='120+24*X/W':g='120+24*X/W':b='120+24*X/W'" \
    -c:v ffv1 "$work/slope.mkv"
for dither in none ordered; do
    build/linux/bin/vireo render "$work/slope.mkv" "$work/dither-$dither.png" -f "Solarize:threshold=0" \
        --dither "$dither" --overwrite --quiet
done
make -i "$work/dither-none.png" -i "$work/dither-ordered.png" \
    -filter_complex "vstack,lutrgb=r='(val-28)*28':g='(val-28)*28':b='(val-28)*28'" docs/pictures/dither.png
PYTHONPATH=build/linux/python /usr/bin/python3 -m jupyter nbconvert --to html --execute --output-dir "$work" examples/python/chains.ipynb
chromium --headless --no-sandbox --hide-scrollbars --window-size=1100,1100 --screenshot="$work/notebook.png" "$work/chains.html"
make -i "$work/notebook.png" -vf crop=635:930:95:130 -frames:v 1 -q:v 4 -bitexact docs/pictures/notebook.jpg
