# SPDX-License-Identifier: MIT
# Kernels: *_kernels.cpp files are compiled once for each instruction set.

if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
  set(VIREO_KERNEL_SETS baseline avx2 avx512)
  add_compile_definitions(VIREO_X86_KERNELS)
else()
  set(VIREO_KERNEL_SETS baseline)
endif()

set(VIREO_KERNEL_FLAGS_avx2 -mavx2 -mbmi -mbmi2 -mtune=haswell)
set(VIREO_KERNEL_FLAGS_avx512 -mavx2 -mbmi -mbmi2 -mavx512f -mavx512bw -mavx512dq -mavx512vl -mavx512vbmi
    -mprefer-vector-width=512)
if(EMSCRIPTEN)
  # For WebAssembly clang leaves loops over the lanes of a vector as loops through memory.
  set(VIREO_KERNEL_FLAGS_baseline "SHELL:-mllvm -unroll-threshold=1000")
endif()
if(MINGW OR (VIREO_SANITIZERS AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU"))
  # The Windows stack is aligned to 16 bytes, and what the address sanitizer lends for it to 32; this compiler
  # spills wider registers as if it were more.
  list(APPEND VIREO_KERNEL_FLAGS_avx2 -Wa,-muse-unaligned-vector-move)
  list(APPEND VIREO_KERNEL_FLAGS_avx512 -Wa,-muse-unaligned-vector-move)
endif()

# vireo_kernels(TARGET FILE...) compiles each file once per set, in a namespace of that set's name, into TARGET.
# The baseline stands first, so that a function which the compiler did not inline is taken from there.
function(vireo_kernels target)
  foreach(set IN LISTS VIREO_KERNEL_SETS)
    set(objects ${target}_kernels_${set})
    add_library(${objects} OBJECT ${ARGN})
    target_compile_definitions(${objects} PRIVATE VIREO_KERNEL_NAMESPACE=${set})
    target_compile_options(${objects} PRIVATE -O3 ${VIREO_KERNEL_FLAGS_${set}})
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:${objects}>)
  endforeach()
endfunction()
