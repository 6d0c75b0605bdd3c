#!/bin/sh
# SPDX-License-Identifier: MIT
# Cuts the filters' icons for Shotcut from the pictures of the documentation.
set -eu
cd "$(dirname "$0")"
for picture in ../../../docs/filters/pictures/*-2.jpg; do
    name=$(basename "$picture" -2.jpg)
    ffmpeg -v error -y -i "$picture" -vf 'crop=ih:ih,scale=200:200' -frames:v 1 -quality 70 "icons/$name.webp"
done
