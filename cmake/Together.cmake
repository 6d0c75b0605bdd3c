# SPDX-License-Identifier: MIT
# Sources compiled together: a build from nothing then reads each header once for several of them.

# vireo_together(TARGET COUNT) compiles the target's sources COUNT at a time, where VIREO_TOGETHER asks for it.
function(vireo_together target count)
  if(VIREO_TOGETHER)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${count})
    # What includes a source takes the types in its unnamed namespace for a header's.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  endif()
endfunction()
