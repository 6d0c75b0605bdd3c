# SPDX-License-Identifier: MIT
# What every target of the project is compiled with.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

if(EMSCRIPTEN)
  set(VIREO_HOST_LIBRARY STATIC)
else()
  set(VIREO_HOST_LIBRARY SHARED)
endif()

# Sums are evaluated as written, so that every instruction set gives the same bytes.
add_compile_options(-ffp-contract=off)
add_compile_options(-Wall -Wextra -Wshadow $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor> -Wno-missing-field-initializers)
include_directories(${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/host/include)

# Packages are the same bytes wherever they are built.
option(VIREO_REPRODUCIBLE "Keep the places of sources and build out of the binaries" OFF)
if(VIREO_REPRODUCIBLE)
  add_compile_options(-ffile-prefix-map=${CMAKE_BINARY_DIR}=build -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
  if(CMAKE_SYSROOT)
    add_compile_options(-ffile-prefix-map=${CMAKE_SYSROOT}=)
  endif()
  if(WIN32)
    add_link_options(-Wl,--no-insert-timestamp)
  endif()
endif()

set(VIREO_SANITIZERS "" CACHE STRING "Sanitizers, as -fsanitize takes them")
set(VIREO_NO_UNDEFINED -Wl,--no-undefined)
if(VIREO_SANITIZERS)
  # A sanitizer's functions may be the program's.
  set(VIREO_NO_UNDEFINED "")
  add_compile_options(-fsanitize=${VIREO_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer
    $<IF:$<BOOL:${VIREO_FUZZERS}>,-O2,-O1>)
  add_link_options(-fsanitize=${VIREO_SANITIZERS})
endif()

# Lines are enough for traces too; all of it, which the Debug configuration has, takes a third of a build's time.
add_compile_options($<$<CONFIG:RelWithDebInfo>:-g1>)

option(VIREO_COVERAGE "Count, with clang, which lines and branches of module, host and engine run" OFF)
if(VIREO_COVERAGE)
  add_compile_options(-fprofile-instr-generate -fcoverage-mapping)
  add_link_options(-fprofile-instr-generate)
endif()

include(Hardening)
