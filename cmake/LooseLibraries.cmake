# SPDX-License-Identifier: MIT
# Before cpack packs: who has MLT loads our module, and nobody needs MLT for it. A library that is listed without a
# package becomes no dependency.
file(WRITE ${CPACK_TEMPORARY_DIRECTORY}/filters/debian/shlibs.local "libmlt-7 7\n")
