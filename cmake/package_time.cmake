# Read by cpack as it begins. All times in a package are that of the last commit
# (SOURCE_DATE_EPOCH).
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(COMMAND git -C ${CPACK_TKV_SOURCES} log -1 --format=%ct
    OUTPUT_VARIABLE time OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(NOT time)
    string(TIMESTAMP time %s)
  endif()
  set(ENV{SOURCE_DATE_EPOCH} ${time})
endif()
