# `cpack` in a build for the prefix /usr makes three Debian packages, because of what each needs: a
# host application wants the tool without an encoder, its sound and its graphics drivers. The third
# has another licence.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL tool disc)
if(DVDNAV_FOUND AND DVDREAD_FOUND)
  list(APPEND CPACK_COMPONENTS_ALL check)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# Reproducible packages, whatever the umask, the folder and the time.
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_LIST_DIR}/package_time.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/package_files.cmake)
set(CPACK_TKV_SOURCES ${PROJECT_SOURCE_DIR})

# There is no mailbox; who hands the packages on names their own.
set(TKV_PACKAGE_MAINTAINER "tkvDvdMenuImg authors <tkvdvdmenuimg@packages.invalid>" CACHE STRING
  "Name and address of whoever answers for the packages")
set(CPACK_PACKAGE_NAME tkvdvdmenuimg)
set(CPACK_PACKAGE_CONTACT "${TKV_PACKAGE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME tkvdvdmenuimg)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS fonts-dejavu-core)
string(JOIN ", " CPACK_DEBIAN_TOOL_PACKAGE_RECOMMENDS
  dvdauthor fonts-noto-cjk fonts-noto-color-emoji fonts-noto-core
  heif-gdk-pixbuf libavif-gdk-pixbuf webp-pixbuf-loader)
set(CPACK_DEBIAN_TOOL_DESCRIPTION "composer of DVD-Video menu pages
tkvDvdMenuImg draws one menu page of a DVD-Video disc: a background,
thumbnails that stand still or play as loops, captions, a title and
navigation labels. The page becomes a preview, a folder of animation
frames, a jacket picture, or the button maps and overlay pictures with
which spumux makes it a menu.

Authoring applications start it once for each page. Who has films and no
such application finds a program for the whole disc in tkvdvddisc.")

set(CPACK_DEBIAN_DISC_PACKAGE_NAME tkvdvddisc)
set(CPACK_DEBIAN_DISC_PACKAGE_SOURCE tkvdvdmenuimg)
set(CPACK_DEBIAN_DISC_PACKAGE_DEPENDS
  "tkvdvdmenuimg (= ${PROJECT_VERSION}), dvdauthor, ffmpeg")
set(CPACK_DEBIAN_DISC_PACKAGE_RECOMMENDS "genisoimage, tkvdvdcheck (= ${PROJECT_VERSION}), xorriso")
set(CPACK_DEBIAN_DISC_PACKAGE_SUGGESTS growisofs)
set(CPACK_DEBIAN_DISC_DESCRIPTION "DVD-Video discs with animated menus, from films
tkvDvdDisc makes a DVD-Video disc of films in one command. It encodes them
to fit, draws menus whose thumbnails are moving excerpts of the films, adds
chapter menus where films have chapters, writes the disc as a folder and as
an image, and burns it.

A second run makes again only what has changed.")

set(CPACK_DEBIAN_CHECK_PACKAGE_NAME tkvdvdcheck)
set(CPACK_DEBIAN_CHECK_PACKAGE_SOURCE tkvdvdmenuimg)
set(CPACK_DEBIAN_CHECK_DESCRIPTION "checker of discs that tkvDvdDisc makes
tkvDvdCheck reads a DVD-Video disc and presses its buttons by means of
libdvdnav, as players do, and tells where it does not lead where it should,
or has data that come too late for a player.

tkvDvdDisc starts it when it has written a disc, and has it read the tables
of DVDs from which films are copied.")

include(CPack)
