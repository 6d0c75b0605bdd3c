# SPDX-License-Identifier: MIT
set(INSTALL_GTEST OFF)
set(gtest_disable_pthreads OFF)
set(CMAKE_COMPILE_WARNING_AS_ERROR OFF)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)

# vireo_test(NAME FILE...): a GoogleTest program that ctest runs whole, under Wine in the Windows build.
function(vireo_test name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE GTest::gmock_main)
  set_target_properties(${name} PROPERTIES COMPILE_WARNING_AS_ERROR ON)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 600)
endfunction()
