# SPDX-License-Identifier: MIT
# The tests of the command line with vireo.exe, as far as they need no shell and no signals. It takes long to start under
# Wine, so that those that start it most run in `./check --long`.
set(program ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/vireo)
file(WRITE ${program} "#!/bin/sh\nexec '${CMAKE_CROSSCOMPILING_EMULATOR}' '${program}.exe' \"$@\"\n")
file(CHMOD ${program} FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
set(VIREO_NATIVE_PROGRAM ${PROJECT_SOURCE_DIR}/build/linux/bin/vireo CACHE FILEPATH "The program to compare with")

function(vireo_command_line_test name selection)
  add_test(NAME command_line_${name}
           COMMAND /usr/bin/python3 -m pytest -q -p no:cacheprovider ${CMAKE_CURRENT_SOURCE_DIR}/${name}.py -k "${selection}")
  set_tests_properties(command_line_${name} PROPERTIES TIMEOUT 600 ENVIRONMENT
    "VIREO_PROGRAM=${program};VIREO_NATIVE_PROGRAM=${VIREO_NATIVE_PROGRAM};PYTHONDONTWRITEBYTECODE=1")
endfunction()

vireo_command_line_test(systems_test "")
