#!/bin/bash
# SPDX-License-Identifier: MIT
# Builds the packages of the last commit twice, in two folders, with two umasks and time zones, and without a compiler
# cache the second time, and compares every byte.
#   scripts/check_reproducible.sh [PRESET...]     package and package-windows, unless told otherwise
set -euo pipefail
source_folder=$(cd "$(dirname "$0")/.." && pwd)
commit=$(git -C "$source_folder" rev-parse HEAD)
presets=("$@")
((${#presets[@]})) || presets=(package package-windows)

# Paths that the cache makes relative are none that the compiler can take off.
unset CCACHE_BASEDIR

work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT
folders=("$work/one" "$work/another place with a longer name")
for folder in "${folders[@]}"; do
    git clone -q -- "$source_folder" "$folder"
    (
        cd "$folder"
        git checkout -q --detach "$commit"
        SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
        export SOURCE_DATE_EPOCH
        for preset in "${presets[@]}"; do
            cmake --preset "$preset" -D VIREO_TOGETHER=ON >/dev/null
            cmake --build --preset "$preset" -j "$(nproc)" >/dev/null
            # A Debian package's outer archive has the modes of files that cpack made on the way.
            (umask 022 && cpack --preset "$preset" >/dev/null)
        done
    ) || exit 1
    export CCACHE_DISABLE=1
    umask 0077
    export TZ=Asia/Tokyo
done

# Everything that is shipped, and the packages themselves.
same=0
while IFS= read -r file; do
    cmp -- "${folders[0]}/$file" "${folders[1]}/$file"
    echo "$(stat -c %s -- "${folders[0]}/$file") bytes $(sha256sum <"${folders[0]}/$file" | cut -c 1-64) ${file##*/}"
    same=$((same + 1))
done < <(cd "${folders[0]}" && find build -type f \( -path '*/bin/*' -o -path '*/frei0r-1/*' -o -name '*.deb' -o -name '*.zip' \
    -o -name '*-setup.exe' \) \
    ! -path '*/_CPack_Packages/*' | sort)
((same > 0))
echo "$same files are the same, byte for byte"
