#!/bin/bash
# SPDX-License-Identifier: MIT
# Installs the Debian package into a bare Debian of its own and renders there. Takes a few minutes, and root.
#   scripts/check_debian_root.sh PACKAGE.deb
set -euo pipefail
package=$(realpath -e -- "$1")

# The mirror that this machine uses.
mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' | head -n 1)
suite=$(. /etc/os-release && echo "$VERSION_CODENAME")

root=$(mktemp -d)
trap 'umount -q -- "$root/proc" || true; rm -rf --one-file-system -- "$root"' EXIT
debootstrap --variant=minbase "$suite" "$root" "$mirror" >"$root.log" 2>&1 || {
    tail -n 20 "$root.log"
    exit 1
}
rm -f "$root.log"
cp -- "$package" "$root/vireo.deb"
cp -f /etc/resolv.conf "$root/etc/resolv.conf"
# Where the machine reaches its archive through a proxy, the new root does too.
cp -f /etc/apt/apt.conf.d/*proxy* "$root/etc/apt/apt.conf.d/" 2>/dev/null || true

mount -t proc proc "$root/proc"
inside() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 "$@"; }
inside apt-get update -qq
inside apt-get install -y -qq --no-install-recommends /vireo.deb >/dev/null
inside vireo --version | tee /dev/stderr | grep -qx 'module /usr/lib/vireo/VireoFiltersMetaPlugin.vrmp'
[[ $(inside vireo list --json | grep -c '"id"') == 22 ]]
printf 'P6\n2 1\n255\nabcxyz' >"$root/in.ppm"
inside vireo render /in.ppm /out.ppm -f "Horizontal Flip" --quiet
cmp "$root/out.ppm" <(printf 'P6\n2 1\n255\nxyzabc')
inside ldconfig -p | grep -q libVireoHost.so.1
inside dpkg -V vireo-filters
inside apt-get purge -y -qq vireo-filters >/dev/null
[[ ! -e $root/usr/lib/vireo && ! -e $root/usr/bin/vireo ]]
echo "installed into a bare $suite, rendered, and went without a trace"
