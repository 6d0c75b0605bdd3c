# SPDX-License-Identifier: MIT
# Header-only libraries, as their packages tell where they are, else where systems have headers. The build sees them
# through a folder of links: a cross compiler must never see the machine's own include folder.
set(VIREO_HEADER_ONLY_DIR ${CMAKE_BINARY_DIR}/header-only)
file(MAKE_DIRECTORY ${VIREO_HEADER_ONLY_DIR})
add_library(vireo_header_only INTERFACE)
target_include_directories(vireo_header_only SYSTEM INTERFACE ${VIREO_HEADER_ONLY_DIR})

function(vireo_header_only package target header)
  find_package(${package} CONFIG QUIET NO_CMAKE_FIND_ROOT_PATH)
  if(TARGET ${target})
    get_target_property(folders ${target} INTERFACE_INCLUDE_DIRECTORIES)
  endif()
  find_path(${package}_INCLUDE_DIR ${header} HINTS ${folders} /usr/include /usr/local/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  cmake_path(GET header PARENT_PATH folder)
  file(CREATE_LINK ${${package}_INCLUDE_DIR}/${folder} ${VIREO_HEADER_ONLY_DIR}/${folder} SYMBOLIC)
endfunction()

vireo_header_only(CLI11 CLI11::CLI11 CLI/CLI.hpp)
vireo_header_only(nlohmann_json nlohmann_json::nlohmann_json nlohmann/json.hpp)
