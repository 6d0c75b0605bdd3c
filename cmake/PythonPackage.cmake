# SPDX-License-Identifier: MIT
# VIREO_PYTHON_FOUND says whether the Python package is built. No interpreter can load what has a sanitizer.
option(VIREO_PYTHON "Build the Python package where pybind11 is found" ON)
if(VIREO_PYTHON AND NOT WIN32 AND NOT EMSCRIPTEN AND NOT VIREO_SANITIZERS)
  set(Python_EXECUTABLE /usr/bin/python3 CACHE FILEPATH "The interpreter that the Python package is for")
  find_package(Python 3.9 QUIET COMPONENTS Interpreter Development.Module)
  find_package(pybind11 2.10 CONFIG QUIET)
  if(pybind11_FOUND AND Python_Development.Module_FOUND)
    set(VIREO_PYTHON_FOUND ON)
  else()
    message(STATUS "Without the Python package: there is no pybind11, or none of Python's headers")
  endif()
endif()
