#!/bin/bash
# SPDX-License-Identifier: MIT
# Unpacks what packages for 64-bit ARM are linked to, from Debian's packages of that architecture, and prints the folder.
#   scripts/arm_sysroot.sh
#   scripts/arm_sysroot.sh --where   fetches nothing: the folder alone
#
# The folder is ~/.cache/vireo-arm64-sysroot/HASH (XDG_CACHE_HOME moves it), with a hash of this script and of the versions
# that the machine has itself; what lies there is not fetched again. Beside the files it has what Debian's tools ask for:
#   var/lib/dpkg     which package has which file, for dpkg-query
#   DEBIAN           symbols and shlibs of all libraries, where dpkg-shlibdeps looks beside libraries of no package
set -eu -o pipefail
cd "$(dirname "$0")"

packages=(
    libc6-dev
    libavcodec-dev libavfilter-dev libavformat-dev libavutil-dev libswresample-dev libswscale-dev
    libmlt-dev libobs-dev libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev
    libpython3-dev pybind11-dev
)
versions=$(dpkg-query -Wf '${Package} ${Version}\n' "${packages[@]}" 2>/dev/null || true)
hash=$({ grep -v '^ *#' "${BASH_SOURCE[0]##*/}"; echo "$versions"; } | sha256sum | cut -c 1-12)
cache=${XDG_CACHE_HOME:-$HOME/.cache}/vireo-arm64-sysroot
sysroot=$cache/$hash
echo "$sysroot"
if [[ ${1-} == --where || -e $sysroot ]]; then exit; fi

mkdir -p "$cache"
exec 9>"$cache/lock" >&2
flock 9
if [[ -e $sysroot ]]; then exit; fi
work=$(mktemp -d "$cache/build.XXXXXX")
trap 'rm -rf "$work"' EXIT
cd "$work"

# Debian's packages of this release, from wherever this machine has its own.
mkdir -p state/lists/partial cache/archives/partial
: >state/status
. /etc/os-release
apt-get indextargets --format '$(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' |
    awk -v release="$VERSION_CODENAME" \
        '$2 ~ "^" release "(-security|-updates)?$" && $3 == "main" { print "deb", $1, $2, $3 }' | sort -u >sources.list
apt=(
    apt-get -qq -o APT::Architecture=arm64 -o APT::Architectures::=arm64
    -o Dir::Etc::SourceList="$work/sources.list" -o Dir::Etc::SourceParts=/dev/null
    -o Dir::State="$work/state" -o Dir::State::status="$work/state/status" -o Dir::Cache="$work/cache"
    -o APT::Sandbox::User=root
)
"${apt[@]}" update
"${apt[@]}" install -y --no-install-recommends --download-only "${packages[@]}"

database=made/var/lib/dpkg
mkdir -p "$database"/{info,updates} made/DEBIAN
echo 1 >"$database/info/format"
for package in cache/archives/*.deb; do
    dpkg-deb -x "$package" made
    dpkg-deb -e "$package" control
    cat control/symbols >>made/DEBIAN/symbols 2>/dev/null || true
    cat control/shlibs >>made/DEBIAN/shlibs 2>/dev/null || true
    { cat control/control; echo 'Status: install ok installed'; echo; } >>"$database/status"
    name=$(sed -n 's/^Package: //p' control/control)
    if grep -qx 'Multi-Arch: same' control/control; then name+=:arm64; fi
    dpkg-deb --fsys-tarfile "$package" | tar -t | sed 's|^\.||; s|/$||; s|^$|/.|' >"$database/info/$name.list"
    rm -r control
done
# What installing would choose among alternatives.
ln -s blas/libblas.so.3 lapack/liblapack.so.3 made/usr/lib/aarch64-linux-gnu
# Links begin at the machine's root.
find made -lname '/*' -printf '%l\t%p\n' | while IFS=$'\t' read -r target link; do
    ln -sfrn -- "made$target" "$link"
done
mv made "$sysroot"
