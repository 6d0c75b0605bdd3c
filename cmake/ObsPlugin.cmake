# SPDX-License-Identifier: MIT
# VIREO_OBS_FOUND says whether the plug-in for OBS is built.
option(VIREO_OBS "Build the plug-in for OBS Studio where libobs is found" ON)
if(VIREO_OBS AND NOT WIN32 AND NOT EMSCRIPTEN)
  find_package(PkgConfig QUIET)
  if(PkgConfig_FOUND)
    pkg_check_modules(libobs QUIET IMPORTED_TARGET libobs>=29)
  endif()
  if(libobs_FOUND)
    set(VIREO_OBS_FOUND ON)
  else()
    message(STATUS "Without the plug-in for OBS: there is no libobs of version 29 or later")
  endif()
endif()
