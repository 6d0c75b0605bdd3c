# SPDX-License-Identifier: MIT
# Where an installation holds what, all relative to its prefix: it may be moved as a whole.

# Packages are made of components.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME filters)

# Any program may link the host library. The module is loaded by name, so it has a folder of its own. On Windows
# everything lies beside the program.
if(WIN32)
  set(VIREO_INSTALL_HOSTDIR ${CMAKE_INSTALL_BINDIR})
  set(VIREO_INSTALL_PRIVATEDIR ${CMAKE_INSTALL_BINDIR})
  set(VIREO_INSTALL_PRESETDIR ${CMAKE_INSTALL_BINDIR}/presets)
  set(VIREO_INSTALL_PLUGINDIR frei0r-1)
else()
  set(VIREO_INSTALL_HOSTDIR ${CMAKE_INSTALL_LIBDIR})
  set(VIREO_INSTALL_PRIVATEDIR ${CMAKE_INSTALL_LIBDIR}/vireo)
  set(VIREO_INSTALL_PRESETDIR ${CMAKE_INSTALL_DATADIR}/vireo/presets)
  set(VIREO_INSTALL_PLUGINDIR ${CMAKE_INSTALL_LIBDIR}/frei0r-1)
endif()
set(VIREO_INSTALL_HEADERDIR ${CMAKE_INSTALL_INCLUDEDIR}/vireo)
# Hosts look in /usr/OFX/Plugins.
set(VIREO_INSTALL_OPENFXDIR OFX/Plugins/Vireo.ofx.bundle/Contents)
set(VIREO_INSTALL_PYTHONDIR lib/python3/dist-packages)
# OBS looks in the folder of the processor's libraries, where there is one.
set(VIREO_INSTALL_OBSDIR lib/${CMAKE_LIBRARY_ARCHITECTURE}/obs-plugins)
set(VIREO_INSTALL_OBSDATADIR ${CMAKE_INSTALL_DATADIR}/obs/obs-plugins/vireo)
if(VIREO_MLT_FOUND)
  # Where MLT looks, seen from its prefix and so from ours.
  pkg_get_variable(folder mlt-framework-7 moduledir)
  cmake_path(RELATIVE_PATH folder BASE_DIRECTORY ${MLT_PREFIX} OUTPUT_VARIABLE VIREO_INSTALL_MLTDIR)
  pkg_get_variable(folder mlt-framework-7 mltdatadir)
  cmake_path(RELATIVE_PATH folder BASE_DIRECTORY ${MLT_PREFIX} OUTPUT_VARIABLE VIREO_INSTALL_MLTDATADIR)
endif()
set(VIREO_INSTALL_KDENLIVEDIR ${CMAKE_INSTALL_DATADIR}/kdenlive/effects)
set(VIREO_INSTALL_SHOTCUTDIR ${CMAKE_INSTALL_DATADIR}/shotcut/qml/filters/vireo)
set(VIREO_INSTALL_EDITORSDIR ${CMAKE_INSTALL_DATADIR}/vireo/editors)

# Shells look for the completion of what a package manager installed in a place of its own.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(VIREO_INSTALL_ZSHDIR ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
else()
  set(VIREO_INSTALL_ZSHDIR ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
endif()
# The same holds for GStreamer, which then says where it looks.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr" AND VIREO_GSTREAMER_FOUND)
  pkg_get_variable(folder gstreamer-1.0 pluginsdir)
  cmake_path(RELATIVE_PATH folder BASE_DIRECTORY ${GSTREAMER_PREFIX} OUTPUT_VARIABLE VIREO_INSTALL_GSTREAMERDIR)
else()
  set(VIREO_INSTALL_GSTREAMERDIR ${CMAKE_INSTALL_LIBDIR}/gstreamer-1.0)
endif()
set(VIREO_INSTALL_BASHDIR ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
set(VIREO_INSTALL_FISHDIR ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

# vireo_install(TARGET FOLDER): installs a program or a library, which finds the host library from there.
function(vireo_install target folder)
  if(EMSCRIPTEN)
    return()
  endif()
  install(TARGETS ${target} RUNTIME DESTINATION ${folder} LIBRARY DESTINATION ${folder})
  file(RELATIVE_PATH way ${CMAKE_INSTALL_PREFIX}/${folder} ${CMAKE_INSTALL_PREFIX}/${VIREO_INSTALL_HOSTDIR})
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${way}")
endfunction()
