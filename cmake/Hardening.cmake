# SPDX-License-Identifier: MIT
# What makes a fault in our programs and libraries hard to use. tests/packaging/contents_test.py finds it in the packages.
option(VIREO_HARDENING "Harden programs and libraries, as packages have them" OFF)
if(NOT VIREO_HARDENING OR EMSCRIPTEN OR VIREO_SANITIZERS OR VIREO_COVERAGE)
  return()
endif()

# For Windows GCC 12 knows no control-flow guard, and its stack protector would be one more DLL beside the program.
if(WIN32)
  add_link_options(-Wl,--dynamicbase,--high-entropy-va,--nxcompat)
  return()
endif()

include(CheckPIESupported)
check_pie_supported()
include(CheckCXXCompilerFlag)
foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection -mbranch-protection=standard)
  string(MAKE_C_IDENTIFIER ${flag} name)
  check_cxx_compiler_flag(${flag} VIREO_KNOWS${name})
  if(VIREO_KNOWS${name})
    add_compile_options(${flag})
  endif()
endforeach()
add_compile_options($<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE$<SEMICOLON>-D_FORTIFY_SOURCE=3>)

add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack)
if(VIREO_KNOWS_fcf_protection)
  # The C library's start-up files keep to shadow stacks without saying so. Of indirect branches they do not, so that no
  # file can be marked for them.
  add_link_options(-Wl,-z,shstk)
endif()
