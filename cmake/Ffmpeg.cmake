# SPDX-License-Identifier: MIT
# FFmpeg's libraries as PkgConfig::FFMPEG: the system's, or those that scripts/windows_ffmpeg.sh builds once on a machine.
find_package(PkgConfig REQUIRED)
set(libraries libavfilter libavformat libavcodec libavutil libswscale libswresample)
if(NOT WIN32)
  pkg_check_modules(FFMPEG REQUIRED IMPORTED_TARGET ${libraries})
  return()
endif()

option(VIREO_LGPL "Leave out what is under the GPL: x264" OFF)
set(VIREO_FFMPEG_DIR "" CACHE PATH "FFmpeg for Windows, where it is not to be built")
if(VIREO_FFMPEG_DIR)
  set(VIREO_FFMPEG_FOLDER ${VIREO_FFMPEG_DIR})
else()
  set(script ${PROJECT_SOURCE_DIR}/scripts/windows_ffmpeg.sh)
  if(VIREO_LGPL)
    list(APPEND script --lgpl)
  endif()
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/scripts/windows_ffmpeg.sh)
  execute_process(COMMAND ${script} --where OUTPUT_VARIABLE VIREO_FFMPEG_FOLDER OUTPUT_STRIP_TRAILING_WHITESPACE
                  COMMAND_ERROR_IS_FATAL ANY)
  if(NOT EXISTS ${VIREO_FFMPEG_FOLDER})
    set(log ${CMAKE_BINARY_DIR}/ffmpeg.log)
    message(STATUS "Building FFmpeg for Windows, once on this machine, which takes some minutes; see ${log}")
    execute_process(COMMAND ${script} OUTPUT_FILE ${log} ERROR_FILE ${log} RESULT_VARIABLE failed)
    if(failed)
      message(FATAL_ERROR "FFmpeg cannot be built for Windows; ${log} tells why. It needs the packages that "
                          "scripts/packages.sh names, and Debian's sources.")
    endif()
  endif()
endif()

# Not those of the system that compiles.
set(ENV{PKG_CONFIG_LIBDIR} ${VIREO_FFMPEG_FOLDER}/lib/pkgconfig)
list(APPEND CMAKE_FIND_ROOT_PATH ${VIREO_FFMPEG_FOLDER})
pkg_check_modules(FFMPEG REQUIRED IMPORTED_TARGET ${libraries})
unset(ENV{PKG_CONFIG_LIBDIR})

# Programs find DLLs beside them.
file(GLOB dlls ${VIREO_FFMPEG_FOLDER}/bin/*.dll)
# ffmpeg.exe alone needs the first, the compiler brings the second.
list(FILTER dlls EXCLUDE REGEX "avdevice|winpthread")
file(MAKE_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
foreach(dll IN LISTS dlls)
  cmake_path(GET dll FILENAME name)
  file(COPY_FILE ${dll} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name} ONLY_IF_DIFFERENT)
  install(FILES ${dll} DESTINATION ${CMAKE_INSTALL_BINDIR})
endforeach()
install(DIRECTORY ${VIREO_FFMPEG_FOLDER}/licences/ DESTINATION licences/ffmpeg)
set(VIREO_FFMPEG_FOLDER ${VIREO_FFMPEG_FOLDER} CACHE INTERNAL "Where FFmpeg for Windows lies")
