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

# Whether the tests are those of the address sanitizer that are run at every check; the long one runs all.
if(VIREO_SANITIZERS MATCHES "address" AND NOT "$ENV{VIREO_LONG}")
  set(VIREO_BRIEF_ADDRESS_TESTS ON)
endif()

# vireo_brief_address_cases(TEST SELECTION): a test of which the address sanitizer's brief tests are these.
function(vireo_brief_address_cases test selection)
  if(VIREO_BRIEF_ADDRESS_TESTS)
    set_property(TEST ${test} APPEND PROPERTY ENVIRONMENT ${selection})
  endif()
endfunction()

# The instruction sets that a processor may lack, for which tests are run again.
set(VIREO_OTHER_SETS baseline avx2)
if(VIREO_BRIEF_ADDRESS_TESTS)
  set(VIREO_OTHER_SETS avx2)
endif()
