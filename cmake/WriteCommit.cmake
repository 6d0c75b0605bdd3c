# SPDX-License-Identifier: MIT
# cmake -D GIT=… -D SOURCES=… -D TEMPLATE=… -D OUTPUT=… -P WriteCommit.cmake
# Writes the commit of the sources, and whether they differ from it, where that changed.
function(git result)
  execute_process(COMMAND ${GIT} -C ${SOURCES} ${ARGN}
    OUTPUT_VARIABLE text OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE failed)
  if(failed)
    set(text "")
  endif()
  set(${result} "${text}" PARENT_SCOPE)
endfunction()

set(commit unknown)
# Sources that were unpacked inside another project are no part of its history.
git(folder rev-parse --show-prefix)
git(head rev-parse --short=12 HEAD)
if(head AND NOT folder)
  git(changes status --porcelain --untracked-files=no)
  set(commit ${head})
  if(changes)
    string(APPEND commit -modified)
  endif()
endif()
configure_file(${TEMPLATE} ${OUTPUT} @ONLY)
