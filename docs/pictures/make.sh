#!/bin/bash
# SPDX-License-Identifier: MIT
# Makes the pictures of the documentation from a photograph in the public domain (US Department of Agriculture),
# which a Debian package carries. Needs the linux build and ffmpeg.
set -euo pipefail
cd "$(dirname "$0")/../.."
work=build/pictures
mkdir -p "$work"
photo=$work/unpacked/usr/share/palapeli/collection/citrus-fruits.jpg

if [[ ! -s $photo ]]; then
    (cd "$work" && apt-get download -qq palapeli-data && dpkg-deb -x palapeli-data_*.deb unpacked)
fi
ffmpeg -v error -y -i "$photo" -vf scale=2400:-2:flags=lanczos "$work/source.png"
build/linux/bin/vireo sheet "$work/source.png" "$work/sheet.png" --overwrite --quiet
ffmpeg -v error -y -i "$work/sheet.png" -vf scale=1200:-2:flags=lanczos -q:v 4 docs/pictures/sheet.jpg
