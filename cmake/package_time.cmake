# Read by cpack as it begins. Everything in a package is of the hour of the last commit.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(COMMAND git -C ${CPACK_TKV_SOURCES} log -1 --format=%ct
    OUTPUT_VARIABLE time OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(NOT time)
    string(TIMESTAMP time %s)
  endif()
  set(ENV{SOURCE_DATE_EPOCH} ${time})
endif()
