# SPDX-License-Identifier: MIT
# Before cpack packs: all files get plain modes, whatever the umask was, and the time of the commit, as SOURCE_DATE_EPOCH
# tells it, so that a package does not tell when and by whom it was made.
execute_process(COMMAND chmod -R u=rwX,go=rX ${CPACK_TEMPORARY_INSTALL_DIRECTORY} COMMAND_ERROR_IS_FATAL ANY)
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(
    COMMAND find ${CPACK_TEMPORARY_INSTALL_DIRECTORY} -exec touch --no-dereference --date=@$ENV{SOURCE_DATE_EPOCH} {} +
    COMMAND_ERROR_IS_FATAL ANY)
  # A zip holds local times; asking for one makes the library look at the zone again.
  set(ENV{TZ} UTC)
  string(TIMESTAMP now)
endif()
