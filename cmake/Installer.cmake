# SPDX-License-Identifier: MIT
# After cpack packed the zip: makes an installer of the same files, where there is NSIS.
if(NOT CPACK_GENERATOR STREQUAL "ZIP" OR NOT CPACK_VIREO_MAKENSIS)
  return()
endif()
include(${CMAKE_CURRENT_LIST_DIR}/InstallerTexts.cmake)

foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(work ${CPACK_TEMPORARY_DIRECTORY}/installer)
  file(REMOVE_RECURSE ${work})
  file(ARCHIVE_EXTRACT INPUT ${package} DESTINATION ${work}/unpacked)
  file(GLOB tree ${work}/unpacked/*)  # the zip holds one folder

  # By name, each folder before what lies in it.
  file(GLOB_RECURSE names LIST_DIRECTORIES true RELATIVE ${tree} ${tree}/*)
  list(SORT names)
  vireo_installer_files("${tree}" "${names}" ${work}/files.nsh bytes)
  vireo_licence_page(${tree} ${work}/licence.txt)
  math(EXPR kilobytes "${bytes} / 1024 + 1")

  # Tests do not wait for a small one.
  set(compressor)
  if(CPACK_VIREO_INSTALLER_COMPRESSOR)
    set(compressor "-XSetCompressor /FINAL ${CPACK_VIREO_INSTALLER_COMPRESSOR}")
  endif()

  # cpack itself brings only what it packed out of its own folder.
  cmake_path(GET package STEM LAST_ONLY name)
  set(installer ${CPACK_PACKAGE_DIRECTORY}/${name}-setup.exe)
  execute_process(
    COMMAND ${CPACK_VIREO_MAKENSIS} -V2 ${compressor} -INPUTCHARSET UTF8 -DVERSION=${CPACK_PACKAGE_VERSION} -DSOURCE=${tree}
            -DFILES=${work}/files.nsh -DKILOBYTES=${kilobytes} -DLICENCE=${work}/licence.txt
            -DPATH_PROGRAM=${CPACK_VIREO_PATH_PROGRAM} -DOUTPUT=${installer}
            ${CMAKE_CURRENT_LIST_DIR}/windows/installer.nsi
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
