# SPDX-License-Identifier: MIT
# Makes the wheel of a build, offline: cmake -D BUILD=build/linux -D PYTHON=/usr/bin/python3 -D OUTPUT=FOLDER -P make_wheel.cmake
file(REMOVE_RECURSE ${OUTPUT})
set(staged ${OUTPUT}/staged)
execute_process(
  COMMAND ${CMAKE_COMMAND} --install ${BUILD} --component wheel --prefix ${staged} --strip
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(
  COMMAND ${PYTHON} -m pip --quiet --disable-pip-version-check wheel --no-index --no-deps --no-build-isolation
          --wheel-dir ${OUTPUT} ${staged}
  COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE_RECURSE ${staged})
