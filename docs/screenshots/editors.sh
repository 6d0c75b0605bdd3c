#!/bin/sh
# SPDX-License-Identifier: MIT
# Takes the pictures of Kdenlive and Shotcut from the build in build/linux.
set -eu
cd "$(dirname "$0")"
pictures=$(mktemp -d)
trap 'rm -rf "$pictures"' EXIT
VIREO_PICTURES=$pictures /usr/bin/python3 -B -m pytest -q -p no:cacheprovider \
    ../../tests/bridges/mlt/editors/editors.py -k start_with
for name in list levels bend; do
    convert "$pictures/kdenlive-$name.png" -crop 925x535+0+38 +repage -strip "kdenlive-$name.png"
    convert "$pictures/mlt-$name.png" -crop 612x595+0+85 +repage -strip "shotcut-$name.png"
done
