# SPDX-License-Identifier: MIT
# VIREO_GSTREAMER_FOUND says whether the GStreamer plug-in is built.
option(VIREO_GSTREAMER "Build the GStreamer plug-in where GStreamer's headers are found" ON)
if(VIREO_GSTREAMER AND NOT WIN32 AND NOT EMSCRIPTEN)
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(GSTREAMER QUIET IMPORTED_TARGET gstreamer-video-1.0>=1.20)
  if(GSTREAMER_FOUND)
    set(VIREO_GSTREAMER_FOUND ON)
  else()
    message(STATUS "Without the GStreamer plug-in: there are no headers of GStreamer 1.20 or later")
  endif()
endif()
