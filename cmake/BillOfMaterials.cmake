# SPDX-License-Identifier: MIT
# Before cpack packs: every package gets its bill of materials, beside its licences.
execute_process(
  COMMAND ${CPACK_VIREO_PYTHON} -B ${CMAKE_CURRENT_LIST_DIR}/bill_of_materials.py ${CPACK_TEMPORARY_INSTALL_DIRECTORY}
          ${CPACK_PACKAGE_VERSION}
  COMMAND_ERROR_IS_FATAL ANY)
