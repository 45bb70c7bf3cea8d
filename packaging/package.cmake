# The Debian package: cpack -G DEB --config BUILD/CPackConfig.cmake, with BUILD a built tree.
file(STRINGS ${CMAKE_SOURCE_DIR}/base/program_paths.h version_line REGEX "PROGRAM_VERSION = ")
string(REGEX REPLACE ".*\"(.*)\".*" "\\1" program_version "${version_line}")

set(CPACK_PACKAGE_NAME tessarin)
set(CPACK_PACKAGE_VERSION ${program_version})
set(CPACK_PACKAGE_VENDOR "Tessarin developers")
set(CPACK_PACKAGE_CONTACT "Tessarin developers <tessarin@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "international draughts: play, analyse, keep games")
set(CPACK_PACKAGE_DESCRIPTION
    "Tessarin International plays and analyses draughts on the board of ten by ten
squares: flying kings, captures forwards and backwards, and the rule that the
most pieces must be taken.
.
It plays at any pace, with a clock if wanted, sets up positions, reads and
writes games as PDN and positions as FEN, and annotates a game or a whole file
of games move by move. Its windows speak English, Dutch, French, Italian,
Portuguese and Russian. The same engine is there as a program for the terminal,
tessarin-cli.")
set(CPACK_RESOURCE_FILE_LICENSE ${CMAKE_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
    WORLD_READ WORLD_EXECUTE)
set(CPACK_SOURCE_GENERATOR "")

set(CPACK_GENERATOR DEB)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION games)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# The libraries are found by what the programs are linked with.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
if(TARGET tessarin)
  # What Qt loads at run time only: without it there is no window.
  set(CPACK_DEBIAN_PACKAGE_DEPENDS qt6-qpa-plugins)
  # What opens the manual and the annotated games; Wayland without the X server beside it; the dialog for files in
  # the user's language.
  set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "xdg-utils, qt6-wayland, qt6-translations-l10n")
  set(CPACK_DEBIAN_PACKAGE_SUGGESTS "www-browser")
endif()
include(CPack)
