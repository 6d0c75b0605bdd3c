# SPDX-License-Identifier: MIT
# What cpack makes: a Debian package, and a zip for Windows.
if(WIN32)
  set(licences licences)
  install(FILES ${PROJECT_SOURCE_DIR}/cmake/windows/README.txt DESTINATION .)
  install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${licences})
  # Of the compiler's run-time libraries.
  foreach(package gcc-mingw-w64-x86-64-posix-runtime mingw-w64-x86-64-dev)
    install(FILES /usr/share/doc/${package}/copyright DESTINATION ${licences} RENAME ${package}.txt)
  endforeach()
else()
  set(licences ${CMAKE_INSTALL_DATADIR}/doc/vireo-filters)
  install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${licences} RENAME copyright)
endif()
install(FILES ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION ${licences})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/LICENSES/ DESTINATION ${licences})

set(CPACK_PACKAGE_NAME vireo-filters)
set(CPACK_PACKAGE_VENDOR "Vireo developers")
set(CPACK_PACKAGE_CONTACT "Vireo developers <developers@vireo.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Twenty-two classic video filters for pictures and video")
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/PlainFiles.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/SortZip.cmake)
set(CPACK_THREADS 1)

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME vireo-filters-${PROJECT_VERSION}-windows)
else()
  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION video)
  set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"The filters as a module for hosts of meta-plug-ins, as frei0r plug-ins, and the
command vireo, which renders pictures and video with them. The host library has
a C interface.")
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
  # What other packages depend on when they link the host library.
  file(WRITE ${CMAKE_BINARY_DIR}/debian/shlibs "libVireoHost ${PROJECT_VERSION_MAJOR} vireo-filters (>= ${PROJECT_VERSION})\n")
  set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
  set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_BINARY_DIR}/debian/shlibs)
  set(CPACK_DEBIAN_PACKAGE_ENHANCES "ffmpeg, kdenlive, melt, shotcut")
endif()
include(CPack)
