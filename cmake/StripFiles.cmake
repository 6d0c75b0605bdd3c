# SPDX-License-Identifier: MIT
# Before cpack packs for Windows: cpack strips what the build made where it was linked, and neither copies of it nor the
# compiler's libraries.
file(GLOB_RECURSE binaries ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*.dll ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*.ofx
     ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*.vrmp ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*.exe)
execute_process(COMMAND ${CPACK_VIREO_STRIP} ${binaries} COMMAND_ERROR_IS_FATAL ANY)
