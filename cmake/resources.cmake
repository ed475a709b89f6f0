# The resource folder, laid out in the build tree as in the installation: links to the programs of
# DVD authoring. One that is missing is looked for in the usual place, where it may still appear.
set(tools ${CMAKE_BINARY_DIR}/share/tkvDvdMenuImg/tools)
file(MAKE_DIRECTORY ${tools})
foreach(name spumux dvdauthor)
  string(TOUPPER TKV_${name} program)
  find_program(${program} ${name})
  if(${program})
    file(CREATE_LINK ${${program}} ${tools}/${name} SYMBOLIC)
  else()
    file(CREATE_LINK /usr/bin/${name} ${tools}/${name} SYMBOLIC)
  endif()
endforeach()
install(DIRECTORY ${tools} DESTINATION ${CMAKE_INSTALL_DATADIR}/tkvDvdMenuImg COMPONENT tool)
