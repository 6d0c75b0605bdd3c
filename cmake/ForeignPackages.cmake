# SPDX-License-Identifier: MIT
# Before cpack packs for another architecture: Debian's tools look at the packages that were linked to, not at this
# machine's.
set(ENV{DEB_HOST_ARCH} ${CPACK_DEBIAN_PACKAGE_ARCHITECTURE})
set(ENV{DPKG_ADMINDIR} ${CPACK_VIREO_SYSROOT}/var/lib/dpkg)
