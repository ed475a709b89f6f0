# Run by cpack when everything has been installed into one folder for each package.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  execute_process(
    COMMAND ${CPACK_TKV_SOURCES}/cmake/debian_files.sh ${CPACK_TEMPORARY_DIRECTORY}/${component}
      ${CPACK_DEBIAN_${upper}_PACKAGE_NAME} ${CPACK_PACKAGE_VERSION} ${CPACK_PACKAGE_CONTACT}
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
