#!/bin/bash
# SPDX-License-Identifier: MIT
# Builds FFmpeg's libraries for 64-bit Windows from Debian's source packages and prints the folder that holds them.
#   scripts/windows_ffmpeg.sh          with x264: under the GPL
#   scripts/windows_ffmpeg.sh --lgpl   without it
#   scripts/windows_ffmpeg.sh --where  builds nothing: the folder alone (with --lgpl first, that of the other build)
#
# The folder is ~/.cache/vireo-windows-ffmpeg/HASH-gpl (or -lgpl; XDG_CACHE_HOME moves it), with a hash of this script, the
# versions and the options; what lies there is not built again. In it:
#   bin              the DLLs; ffmpeg.exe and ffprobe.exe for tests, with x264 also with frei0r
#   include, lib     headers, import libraries, lib/pkgconfig
#   licences         texts, and VERSIONS.txt: what it was made from and where the sources are
#   sources          the source packages
set -eu -o pipefail
cd "$(dirname "$0")"

host=x86_64-w64-mingw32
compiler=$host-gcc-posix
licence=gpl
build=yes
for argument; do
    case $argument in
        --lgpl) licence=lgpl ;;
        --where) build=no ;;
        *)
            echo "windows_ffmpeg.sh: there is no option $argument" >&2
            exit 2
            ;;
    esac
done

# The versions that the native build has, so that both write the same files.
version_of() { dpkg-query -Wf '${source:Version}' "$1"; }
ffmpeg_version=$(version_of libavcodec-dev)
sources=(ffmpeg="$ffmpeg_version")
options=(
    --prefix=/ --enable-cross-compile --target-os=mingw32 --arch=x86_64
    --cross-prefix=$host- --cc=$compiler --ld=$compiler --pkg-config=pkg-config
    --enable-shared --disable-static --disable-debug --disable-doc --disable-network
    --disable-ffplay --disable-postproc --disable-autodetect
    --enable-zlib --enable-mediafoundation --enable-w32threads
    # What the program puts into its graphs, what the tool does by itself, and what tests ask of it.
    --disable-filters
    --enable-filter=scale,format,null,bwdif,yadif,fps,transpose,hflip,vflip,crop
    --enable-filter=aformat,anull,aresample,atrim,trim,setpts,asetpts,setsar,split,copy
    --enable-filter=color,testsrc,testsrc2,sine,anullsrc,psnr,blend
    --disable-indevs --enable-indev=lavfi --disable-outdevs
    --extra-ldflags=-Wl,--no-insert-timestamp
)
x264_options=(
    --prefix=/ --host=$host --cross-prefix=$host- --enable-static --disable-cli --disable-opencl
)
if [[ $licence == gpl ]]; then
    sources+=(x264="$(version_of "$(dpkg-query -Wf '${Depends}' libavcodec59 | grep -o 'libx264-[0-9]*')")")
    options+=(--enable-gpl --enable-libx264 --enable-frei0r --enable-filter=frei0r,frei0r_src)
fi

hash=$({ grep -v '^ *#' "${BASH_SOURCE[0]##*/}"; echo "${sources[@]} ${options[@]}"; } | sha256sum | cut -c 1-12)
cache=${XDG_CACHE_HOME:-$HOME/.cache}/vireo-windows-ffmpeg
prefix=$cache/$hash-$licence
echo "$prefix"
if [[ $build == no || -e $prefix ]]; then exit; fi

mkdir -p "$cache"
exec 9>"$cache/lock" >&2
flock 9
if [[ -e $prefix ]]; then exit; fi
work=$(mktemp -d "$cache/build.XXXXXX")
trap 'rm -rf "$work"' EXIT
cd "$work"

# Debian's packages of this release as sources, from wherever this machine has its binaries.
mkdir -p fetched lists/partial
. /etc/os-release
apt-get indextargets --format '$(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' |
    awk -v release="$VERSION_CODENAME" \
        '$2 ~ "^" release "(-security|-updates)?$" && $3 == "main" { print "deb-src", $1, $2, $3 }' | sort -u >sources.list
apt=(
    apt-get -qq -o Dir::Etc::SourceList="$work/sources.list" -o Dir::Etc::SourceParts=/dev/null
    -o Dir::State::Lists="$work/lists" -o Dir::Cache::srcpkgcache= -o Dir::Cache::pkgcache= -o APT::Sandbox::User=root
)
"${apt[@]}" update
for source in "${sources[@]}"; do
    # A mirror keeps the last version alone.
    (cd fetched && { "${apt[@]}" source --download-only "$source" || "${apt[@]}" source --download-only "${source%%=*}"; })
    dpkg-source --no-check -x fetched/"${source%%=*}"_*.dsc "${source%%=*}"
done

export PKG_CONFIG_LIBDIR=$work/needed/lib/pkgconfig
needed=$work/needed
mkdir -p "$needed"/{include,lib/pkgconfig}
# Without zlib1.dll.
cp /usr/$host/lib/libz.a "$needed/lib"
cp /usr/$host/include/{zlib,zconf}.h /usr/include/frei0r.h "$needed/include"
cat >"$PKG_CONFIG_LIBDIR/zlib.pc" <<END
Name: zlib
Description: compression
Version: 1
Libs: -L$needed/lib -lz
Cflags: -I$needed/include
END
jobs=$(nproc)
export C_INCLUDE_PATH=$needed/include

if [[ $licence == gpl ]]; then
    (
        cd x264
        CC=$compiler ./configure "${x264_options[@]}"
        make -j "$jobs"
        make install-lib-static DESTDIR="$needed"
        sed -i "s|^prefix=.*|prefix=$needed|; s|^exec_prefix=.*|exec_prefix=$needed|; s|=//*\(lib\|include\)$|=$needed/\1|" \
            "$PKG_CONFIG_LIBDIR/x264.pc"
    )
fi

(
    cd ffmpeg
    ./configure "${options[@]}" || { tail -n 30 ffbuild/config.log; exit 1; }
    make -j "$jobs"
    make install DESTDIR="$work/made"
)

mkdir -p made/licences made/sources
$host-strip made/bin/*.{dll,exe}
cp "$($compiler -print-file-name=libwinpthread-1.dll)" made/bin
for file in made/lib/pkgconfig/*.pc; do
    sed -i -e 's|^prefix=.*|prefix=${pcfiledir}/../..|' -e 's|^\(exec_prefix\)=.*|\1=${prefix}|' \
        -e 's|^libdir=.*|libdir=${prefix}/lib|' -e 's|^includedir=.*|includedir=${prefix}/include|' \
        -e 's|^Requires.private:.*|Requires.private:|' "$file"
done
sed -i 's|^Requires:.*|Requires:|' made/lib/pkgconfig/libavutil.pc
cp fetched/* made/sources
cp ffmpeg/COPYING.LGPLv2.1 made/licences/LGPL-2.1.txt
cp ffmpeg/debian/copyright made/licences/ffmpeg.txt
cp /usr/share/doc/libz-mingw-w64-dev/copyright made/licences/zlib.txt
versions=$(for file in fetched/*.dsc; do sed -n 's/^Source: //p' "$file"; sed -n 's/^Version: //p' "$file"; done | paste - -)
if [[ $licence == gpl ]]; then
    cp ffmpeg/COPYING.GPLv2 made/licences/GPL-2.txt
    cp x264/debian/copyright made/licences/x264.txt
fi
{
    if [[ $licence == gpl ]]; then
        echo 'The FFmpeg libraries here contain x264 and are under the GNU General Public License,'
        echo 'version 2 or later (GPL-2.txt); so is the whole of what is passed on with them.'
    else
        echo 'The FFmpeg libraries here are under the GNU Lesser General Public License, version 2.1'
        echo 'or later (LGPL-2.1.txt): anyone may put others with the same interface in their place.'
    fi
    echo
    echo "They were made with $($compiler -dumpfullversion -dumpversion | sed 's/^/GCC /') for $host by scripts/windows_ffmpeg.sh in"
    echo 'the sources of Vireo, from these source packages of Debian, unchanged:'
    echo
    echo "$versions" | sed 's/^/    /'
    echo
    echo 'Debian keeps every version of its sources: https://snapshot.debian.org/package/NAME/VERSION/'
    echo "zlib comes from Debian's libz-mingw-w64-dev $(version_of libz-mingw-w64-dev)."
    echo
    echo 'FFmpeg was configured with'
    echo
    printf '    %s\n' "${options[@]}"
} >made/licences/VERSIONS.txt
mv made "$prefix"
