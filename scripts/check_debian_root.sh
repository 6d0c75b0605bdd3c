#!/bin/bash
# SPDX-License-Identifier: MIT
# Installs the Debian package into a bare Debian of its own and renders there. Takes a few minutes, and root. What is for
# another processor runs under QEMU.
#   scripts/check_debian_root.sh PACKAGE.deb
set -euo pipefail
package=$(realpath -e -- "$1")
architecture=$(dpkg-deb -f "$package" Architecture)

# The mirror that this machine uses.
mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' | head -n 1)
suite=$(. /etc/os-release && echo "$VERSION_CODENAME")

root=$(mktemp -d)
chmod 755 "$root"
namespace=
finish() {
    [[ -z $namespace ]] || { kill -KILL "$namespace"; wait || true; }
    umount -q -- "$root/proc" || true
    rm -rf --one-file-system -- "$root" "$root.log"
}
trap finish EXIT
logged() {
    "$@" >"$root.log" 2>&1 || {
        tail -n 20 "$root.log"
        exit 1
    }
}
enter=()
inside() {
    "${enter[@]}" chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 "$@"
}

logged debootstrap --foreign --variant=minbase --arch="$architecture" "$suite" "$root" "$mirror"
if ! inside /bin/true 2>/dev/null; then
    # The machine does not hand such programs to QEMU. A user namespace, where users are the machine's, has a table of its
    # own for that, which is gone with it.
    unshare --user --mount --pid --fork --kill-child sleep infinity 2>/dev/null &
    until namespace=$(pgrep -P $! -x sleep); do sleep 0.1; done
    for map in uid_map gid_map; do
        echo 0 0 4294967295 >"/proc/$namespace/$map"
    done
    enter=(nsenter --target "$namespace" --user --mount --pid)
    "${enter[@]}" sh -ec 'mount -t binfmt_misc binfmt_misc "$0" && cat "/usr/lib/binfmt.d/$1.conf" >"$0/register"' \
        /proc/sys/fs/binfmt_misc "qemu-$(dpkg-architecture -a "$architecture" -q DEB_HOST_GNU_CPU 2>/dev/null)"
fi
# Devices stand there already; in a container it does not try whether it can make more.
logged inside container=lxc /debootstrap/debootstrap --second-stage
cp -- "$package" "$root/vireo.deb"
cp -f /etc/resolv.conf "$root/etc/resolv.conf"
# Where the machine reaches its archive through a proxy, the new root does too.
cp -f /etc/apt/apt.conf.d/*proxy* "$root/etc/apt/apt.conf.d/" 2>/dev/null || true

inside mount -t proc proc /proc
inside apt-get update -qq
inside apt-get install -y -qq --no-install-recommends /vireo.deb >/dev/null
inside vireo --version | tee /dev/stderr | grep -qx 'module /usr/lib/vireo/VireoFiltersMetaPlugin.vrmp'
[[ $(inside vireo list --json | grep -c '"id"') == 22 ]]
printf 'P6\n2 1\n255\nabcxyz' >"$root/in.ppm"
inside vireo render /in.ppm /out.ppm -f "Horizontal Flip" --quiet
cmp "$root/out.ppm" <(printf 'P6\n2 1\n255\nxyzabc')
{
    printf 'YUV4MPEG2 W64 H64 F25:1 Ip C444\nFRAME\n'
    head -c 12288 /dev/zero
    printf 'FRAME\n'
    head -c 12288 /dev/urandom
} >"$root/in.y4m"
inside vireo render /in.y4m /out.mp4 -f Solarize --quiet
[[ $(inside vireo probe /out.mp4 --json) == *'"frames": 2,'* ]]
inside ldconfig -p | grep -q libVireoHost.so.1
inside dpkg -V vireo-filters
inside apt-get purge -y -qq vireo-filters >/dev/null
[[ ! -e $root/usr/lib/vireo && ! -e $root/usr/bin/vireo ]]
echo "installed into a bare $suite, rendered, and went without a trace"
