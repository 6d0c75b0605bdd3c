# SPDX-License-Identifier: MIT
# After cpack packed: it puts files into a zip as the file system lists them, which differs from one machine to another.
# Packs them again by name.
if(CPACK_GENERATOR STREQUAL "ZIP")
  set(folder ${CPACK_TEMPORARY_DIRECTORY}/sorted)
  foreach(package IN LISTS CPACK_PACKAGE_FILES)
    file(REMOVE_RECURSE ${folder})
    file(ARCHIVE_EXTRACT INPUT ${package} DESTINATION ${folder})
    execute_process(COMMAND chmod -R u=rwX,go=rX ${folder} COMMAND_ERROR_IS_FATAL ANY)
    file(GLOB_RECURSE names LIST_DIRECTORIES false RELATIVE ${folder} ${folder}/*)
    list(SORT names)
    execute_process(COMMAND ${CMAKE_COMMAND} -E tar cf ${package} --format=zip -- ${names}
      WORKING_DIRECTORY ${folder} COMMAND_ERROR_IS_FATAL ANY)
  endforeach()
endif()
