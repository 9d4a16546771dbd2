# Runs before each package is created: compresses the files that Debian policy requires to be compressed, and sets the
# time of every file to that of the commit.
file(GLOB_RECURSE plain LIST_DIRECTORIES false
  ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/share/man/*
  ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/share/doc/*/changelog)
foreach(file IN LISTS plain)
  if(NOT file MATCHES "\\.gz$")
    execute_process(COMMAND gzip -9n ${file} COMMAND_ERROR_IS_FATAL ANY)
  endif()
endforeach()
execute_process(
  COMMAND find ${CPACK_TEMPORARY_INSTALL_DIRECTORY} -exec touch -h -d @$ENV{SOURCE_DATE_EPOCH} {} +
  COMMAND_ERROR_IS_FATAL ANY)
