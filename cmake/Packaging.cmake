# SPDX-License-Identifier: MIT
# What cpack makes: a Debian package; for Windows a zip and, where there is NSIS, an installer.
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
  if(VIREO_LGPL)
    string(APPEND CPACK_PACKAGE_FILE_NAME -lgpl)
  endif()
  set(CPACK_VIREO_STRIP ${CMAKE_STRIP})
  list(PREPEND CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/StripFiles.cmake)
  find_program(VIREO_MAKENSIS makensis)
  set(CPACK_VIREO_MAKENSIS ${VIREO_MAKENSIS})
  set(CPACK_VIREO_PATH_PROGRAM ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/user_path.exe)
  list(APPEND CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/Installer.cmake)
else()
  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_DEB_COMPONENT_INSTALL ON)
  set(CPACK_COMPONENTS_ALL filters)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

  set(CPACK_DEBIAN_FILTERS_PACKAGE_NAME vireo-filters)
  set(CPACK_DEBIAN_FILTERS_PACKAGE_SECTION video)
  set(CPACK_DEBIAN_FILTERS_DESCRIPTION
"The filters as a module for hosts of meta-plug-ins, as frei0r and OpenFX plug-ins,
and the command vireo, which renders pictures and video with them. The engine, for chains
of filters in other programs, and the host library have C interfaces.")
  set(CPACK_DEBIAN_FILTERS_PACKAGE_SHLIBDEPS ON)
  if(VIREO_MLT_FOUND)
    list(APPEND CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/LooseLibraries.cmake)
  endif()
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
  # What other packages depend on when they link one of the libraries.
  set(shlibs "")
  foreach(library libVireo libVireoHost)
    string(APPEND shlibs "${library} ${PROJECT_VERSION_MAJOR} vireo-filters (>= ${PROJECT_VERSION})\n")
  endforeach()
  file(WRITE ${CMAKE_BINARY_DIR}/debian/shlibs "${shlibs}")
  set(CPACK_DEBIAN_FILTERS_PACKAGE_CONTROL_EXTRA ${CMAKE_BINARY_DIR}/debian/shlibs)
  set(CPACK_DEBIAN_FILTERS_PACKAGE_RECOMMENDS python3)
  set(CPACK_DEBIAN_FILTERS_PACKAGE_ENHANCES "ffmpeg, kdenlive, melt, shotcut")

  if(VIREO_GSTREAMER_FOUND)
    list(APPEND CPACK_COMPONENTS_ALL gstreamer)
    install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/gstreamer1.0-vireo RENAME copyright COMPONENT gstreamer)
    set(CPACK_DEBIAN_GSTREAMER_PACKAGE_NAME gstreamer1.0-vireo)
    set(CPACK_DEBIAN_GSTREAMER_PACKAGE_SECTION video)
    set(CPACK_DEBIAN_GSTREAMER_DESCRIPTION
"For GStreamer: each filter as an element, and vireo, which renders chains of
them with key frames, with the pixels of the command vireo.")
    set(CPACK_DEBIAN_GSTREAMER_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_GSTREAMER_PACKAGE_DEPENDS "vireo-filters (= ${PROJECT_VERSION})")
  endif()

  if(VIREO_PYTHON_FOUND)
    list(APPEND CPACK_COMPONENTS_ALL python)
    install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/python3-vireo RENAME copyright COMPONENT python)
    math(EXPR next "${Python_VERSION_MINOR} + 1")
    set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-vireo)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
    set(CPACK_DEBIAN_PYTHON_DESCRIPTION
"For Python: chains of the filters over NumPy arrays, with the pixels of the
command vireo.")
    # The system's libraries that it needs are also needed by the filters.
    set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "vireo-filters (= ${PROJECT_VERSION}), python3-numpy, \
python3 (>= 3.${Python_VERSION_MINOR}), python3 (<< 3.${next})")
  endif()

  if(VIREO_OBS_FOUND)
    list(APPEND CPACK_COMPONENTS_ALL obs)
    install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/vireo-obs RENAME copyright COMPONENT obs)
    set(CPACK_DEBIAN_OBS_PACKAGE_NAME vireo-obs)
    set(CPACK_DEBIAN_OBS_PACKAGE_SECTION video)
    set(CPACK_DEBIAN_OBS_DESCRIPTION
"For OBS Studio: chains of the filters on every video source, live, with the
pixels of the command vireo.")
    set(CPACK_DEBIAN_OBS_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_OBS_PACKAGE_DEPENDS "vireo-filters (= ${PROJECT_VERSION})")
    set(CPACK_DEBIAN_OBS_PACKAGE_ENHANCES obs-studio)
  endif()
endif()
include(CPack)
