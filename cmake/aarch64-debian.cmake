# SPDX-License-Identifier: MIT
# As aarch64.cmake, with the libraries of a Debian of that architecture, which scripts/arm_sysroot.sh fetches once on a
# machine.
include(${CMAKE_CURRENT_LIST_DIR}/aarch64.cmake)

set(script ${CMAKE_CURRENT_LIST_DIR}/../scripts/arm_sysroot.sh)
execute_process(COMMAND ${script} --where OUTPUT_VARIABLE CMAKE_SYSROOT OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
if(NOT EXISTS ${CMAKE_SYSROOT})
  message(STATUS "Fetching Debian's libraries for 64-bit ARM, once on this machine, which takes some minutes")
  execute_process(COMMAND ${script} COMMAND_ERROR_IS_FATAL ANY)
endif()

set(CMAKE_FIND_ROOT_PATH ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_SYSROOT}/usr/lib/aarch64-linux-gnu/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
set(CMAKE_CROSSCOMPILING_EMULATOR "qemu-aarch64-static;-L;${CMAKE_SYSROOT}")
