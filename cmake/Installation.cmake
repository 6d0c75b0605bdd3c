# SPDX-License-Identifier: MIT
# Where an installation holds what, all relative to its prefix: it may be moved as a whole.

# The host library and the module are loaded by our own programs and plug-ins alone, so they have a folder of their
# own. On Windows everything lies beside the program.
if(WIN32)
  set(VIREO_INSTALL_PRIVATEDIR ${CMAKE_INSTALL_BINDIR})
else()
  set(VIREO_INSTALL_PRIVATEDIR ${CMAKE_INSTALL_LIBDIR}/vireo)
endif()
set(VIREO_INSTALL_PLUGINDIR ${CMAKE_INSTALL_LIBDIR}/frei0r-1)
set(VIREO_INSTALL_KDENLIVEDIR ${CMAKE_INSTALL_DATADIR}/kdenlive/effects)

# vireo_install(TARGET FOLDER): installs a program or a library, which finds the host library from there.
function(vireo_install target folder)
  if(EMSCRIPTEN)
    return()
  endif()
  install(TARGETS ${target} RUNTIME DESTINATION ${folder} LIBRARY DESTINATION ${folder})
  file(RELATIVE_PATH way ${CMAKE_INSTALL_PREFIX}/${folder} ${CMAKE_INSTALL_PREFIX}/${VIREO_INSTALL_PRIVATEDIR})
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${way}")
endfunction()
