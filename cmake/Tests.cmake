# SPDX-License-Identifier: MIT
# GoogleTest as the system has it built; other compilers build it from its sources.
set(VIREO_GOOGLETEST_SOURCES /usr/src/googletest CACHE PATH "GoogleTest's sources")
if(NOT CMAKE_CROSSCOMPILING)
  find_package(GTest CONFIG QUIET)
endif()
if(NOT TARGET GTest::gmock_main)
  set(INSTALL_GTEST OFF)
  set(gtest_disable_pthreads OFF)
  set(CMAKE_COMPILE_WARNING_AS_ERROR OFF)
  add_subdirectory(${VIREO_GOOGLETEST_SOURCES} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
endif()

# vireo_test(NAME FILE...): a GoogleTest program that ctest runs whole, under Wine in the Windows build.
function(vireo_test name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE GTest::gmock_main)
  set_target_properties(${name} PROPERTIES COMPILE_WARNING_AS_ERROR ON)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 600)
endfunction()

# vireo_threaded(TEST...): tests of what runs on several threads, which are all that the thread sanitizer's build makes and
# runs.
add_custom_target(threaded_tests)
function(vireo_threaded)
  foreach(test IN LISTS ARGV)
    set_property(TEST ${test} APPEND PROPERTY LABELS threaded)
    if(TARGET ${test})
      add_dependencies(threaded_tests ${test})
    endif()
  endforeach()
endfunction()

# vireo_threaded_cases(TEST SELECTION): a threaded test whose other cases are nothing to the thread sanitizer, under which
# all of them would take long. The selection is what its runner reads from the environment.
function(vireo_threaded_cases test selection)
  vireo_threaded(${test})
  if(VIREO_SANITIZERS STREQUAL "thread")
    set_property(TEST ${test} APPEND PROPERTY ENVIRONMENT ${selection})
  endif()
endfunction()

# vireo_addressed_cases(TEST SELECTION): a test whose other cases run code under the address sanitizer that these run too.
function(vireo_addressed_cases test selection)
  if(VIREO_SANITIZERS MATCHES "address")
    set_property(TEST ${test} APPEND PROPERTY ENVIRONMENT ${selection})
  endif()
endfunction()
