# What is installed beside the programs and the module; the component is the package it goes to.
function(tkv_install component program)
  install(FILES docs/${program}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component})
  install(FILES completion/${program}.bash RENAME ${program}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT ${component})
  install(FILES completion/${program}.zsh RENAME _${program}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions COMPONENT ${component})
  install(FILES completion/${program}.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT ${component})
endfunction()
tkv_install(tool tkvDvdMenuImg)
tkv_install(disc tkvDvdDisc)
if(DVDNAV_FOUND AND DVDREAD_FOUND)
  install(FILES docs/tkvDvdCheck.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT check)
endif()
install(FILES LICENSE RENAME copyright
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/tkvdvdmenuimg COMPONENT tool)
