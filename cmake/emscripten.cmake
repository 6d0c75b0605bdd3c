# SPDX-License-Identifier: MIT
set(EMSCRIPTEN_SYSTEM_PROCESSOR wasm32)
include(/usr/share/emscripten/cmake/Modules/Platform/Emscripten.cmake)

add_compile_options(-msimd128 -mbulk-memory -mnontrapping-fptoint -fwasm-exceptions)
add_link_options(-fwasm-exceptions)
