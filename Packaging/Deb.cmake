# The Debian package: cpack -G DEB

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velmora)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The Velmora developers <packages@velmora.app>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "removes tracking parameters from copied links")
set(CPACK_SET_DESTDIR ON) # The bus's service file names the prefix.
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_CMAKE_PROJECTS "${PROJECT_BINARY_DIR};Velmora;application;/;${PROJECT_BINARY_DIR};Velmora;tools;/;${PROJECT_BINARY_DIR};Velmora;debian;/")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
# What Qt Quick loads when it runs: no library names these.
set(CPACK_DEBIAN_PACKAGE_DEPENDS
  "qml6-module-qtqml, qml6-module-qtqml-models, qml6-module-qtqml-workerscript, qml6-module-qtquick, qml6-module-qtquick-layouts, qml6-module-qtquick-templates, qml6-module-qtquick-window, qt6-qpa-plugins, ca-certificates")
# GNOME shows status icons with an extension only. The first name is installed where none of the others is: each is
# a panel of another desktop, on which GNOME's extension has no business.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
  "dbus-user-session, fonts-inter | fonts-dejavu-core, gnome-shell-extension-appindicator | plasma-workspace | xfce4-panel | lxqt-panel | mate-panel | cinnamon | budgie-core | lxpanel | waybar | sway | i3-wm | tint2 | trayer | stalonetray")
set(CPACK_PACKAGE_DESCRIPTION
  "Velmora sits in the panel and watches the clipboard. When a link is copied,
it takes out the query parameters that only serve to follow the click, such
as campaign tags and click identifiers, and puts the clean link back.
.
Links are cleaned on this computer and never leave it. The package also
holds velmora-clean, which does the same for text files and pipes.")

set(documents ${CMAKE_INSTALL_DATADIR}/doc/velmora)
install(FILES ${CMAKE_CURRENT_SOURCE_DIR}/copyright DESTINATION ${documents} COMPONENT debian)
set(changes ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
find_package(Python3 REQUIRED COMPONENTS Interpreter)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${changes})
execute_process(COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/Tools/release/debian-changelog ${changes} ${PROJECT_VERSION}
  OUTPUT_FILE ${CMAKE_CURRENT_BINARY_DIR}/changelog COMMAND_ERROR_IS_FATAL ANY)
install(CODE "execute_process(COMMAND gzip -9 -n -c \"${CMAKE_CURRENT_BINARY_DIR}/changelog\"
  OUTPUT_FILE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${documents}/changelog.gz\" COMMAND_ERROR_IS_FATAL ANY)
# Debian's manual pages are compressed.
foreach(page velmora velmora-clean)
  execute_process(COMMAND gzip -9 -n -f
    \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_MANDIR}/man1/\${page}.1\" COMMAND_ERROR_IS_FATAL ANY)
endforeach()" COMPONENT debian)

include(CPack)
