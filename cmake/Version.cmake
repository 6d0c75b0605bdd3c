# SPDX-License-Identifier: MIT
# The version stands in project() alone. The commit is looked up at every build, in a source of its own: a new commit
# compiles nothing else.
find_package(Git QUIET)

set(VIREO_COMMIT_SOURCE ${CMAKE_BINARY_DIR}/commit/commit.cpp)
add_custom_target(vireo_commit
  COMMAND ${CMAKE_COMMAND} -D GIT=$<IF:$<BOOL:${GIT_FOUND}>,${GIT_EXECUTABLE},git> -D SOURCES=${PROJECT_SOURCE_DIR}
          -D TEMPLATE=${PROJECT_SOURCE_DIR}/engine/commit.cpp.in -D OUTPUT=${VIREO_COMMIT_SOURCE}
          -P ${CMAKE_CURRENT_LIST_DIR}/WriteCommit.cmake
  BYPRODUCTS ${VIREO_COMMIT_SOURCE}
  COMMENT "Looking up the commit")
