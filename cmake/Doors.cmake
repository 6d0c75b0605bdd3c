# SPDX-License-Identifier: MIT
# VIREO_NAME_FOUND says which doors into other programs are built.

# vireo_door(NAME WHAT PACKAGE): one that stands on a program's library, PkgConfig::NAME.
macro(vireo_door name what package)
  option(VIREO_${name} "Build ${what} where its headers are found" ON)
  if(VIREO_${name} AND NOT WIN32 AND NOT EMSCRIPTEN)
    find_package(PkgConfig QUIET)
    if(PkgConfig_FOUND)
      pkg_check_modules(${name} QUIET IMPORTED_TARGET ${package})
    endif()
    if(${name}_FOUND)
      set(VIREO_${name}_FOUND ON)
    else()
      message(STATUS "Without ${what}: there is no ${package}")
    endif()
  endif()
endmacro()

vireo_door(GSTREAMER "the GStreamer plug-in" gstreamer-video-1.0>=1.20)
vireo_door(OBS "the plug-in for OBS" libobs>=29)
vireo_door(MLT "the module for MLT" mlt-framework-7>=7.12)

# No interpreter can load what has a sanitizer.
option(VIREO_PYTHON "Build the Python package where pybind11 is found" ON)
if(VIREO_PYTHON AND NOT WIN32 AND NOT EMSCRIPTEN AND NOT VIREO_SANITIZERS)
  set(Python_EXECUTABLE /usr/bin/python3 CACHE FILEPATH "The interpreter that the Python package is for")
  find_package(Python 3.9 QUIET COMPONENTS Interpreter)
  if(CMAKE_CROSSCOMPILING)
    # The interpreter that runs here would tell of its own headers and modules.
    find_path(Python_INCLUDE_DIR Python.h PATH_SUFFIXES python3.${Python_VERSION_MINOR})
    set(PYTHON_MODULE_EXTENSION .cpython-3${Python_VERSION_MINOR}-${CMAKE_LIBRARY_ARCHITECTURE}.so)
  endif()
  find_package(Python 3.9 QUIET COMPONENTS Interpreter Development.Module)
  find_package(pybind11 2.10 CONFIG QUIET)
  if(pybind11_FOUND AND Python_Development.Module_FOUND)
    set(VIREO_PYTHON_FOUND ON)
  else()
    message(STATUS "Without the Python package: there is no pybind11, or none of Python's headers")
  endif()
endif()
