# Installs Vantry as a desktop application (program, run-time files, menu entry, icons, AppStream
# metadata, manual page) and describes its Debian package for CPack:
#   cmake --install build --prefix /usr/local
#   cpack --config build/CPackConfig.cmake -G DEB -B build/package

set(VANTRY_APP_ID dev.vantry.Vantry)
set(VANTRY_CONTACT "packages@vantry.dev")
set(VANTRY_RELEASE_DATE 2026-11-22)
set(VANTRY_RELEASE_DATE_RFC2822 "Sun, 22 Nov 2026 12:00:00 +0000")
set(VANTRY_LICENSE "LicenseRef-proprietary" CACHE STRING "SPDX identifier of the program's licence")
set(VANTRY_LICENSE_TEXT "All rights reserved." CACHE STRING "One-line licence statement for the package")
set(VANTRY_ICON_SIZES 16 22 24 32 48 64 128 256)

set(_src ${CMAKE_CURRENT_LIST_DIR})
set(_out ${CMAKE_BINARY_DIR}/packaging)

configure_file(${_src}/${VANTRY_APP_ID}.metainfo.xml.in ${_out}/${VANTRY_APP_ID}.metainfo.xml @ONLY)
configure_file(${_src}/vantry.1.in ${_out}/vantry.1 @ONLY)
configure_file(${_src}/copyright.in ${_out}/copyright @ONLY)
configure_file(${_src}/changelog.in ${_out}/changelog @ONLY)
# The program run from the build folder reads its run-time files from beside itself.
configure_file(${_src}/sql_reserved_words.txt ${CMAKE_BINARY_DIR}/sql_reserved_words.txt COPYONLY)

# Manual pages and the Debian changelog are installed compressed, without a time stamp in the
# gzip header so that two builds give the same package.
find_program(GZIP_PROGRAM gzip REQUIRED)
set(_generated)
foreach(_file vantry.1 changelog)
  add_custom_command(OUTPUT ${_out}/${_file}.gz
    COMMAND ${GZIP_PROGRAM} -9 -n -c ${_out}/${_file} > ${_out}/${_file}.gz
    DEPENDS ${_out}/${_file} VERBATIM)
  list(APPEND _generated ${_out}/${_file}.gz)
endforeach()

# The bitmap icons are rendered from the one SVG drawing at build time.
find_program(RSVG_CONVERT rsvg-convert)
if(RSVG_CONVERT)
  foreach(_size IN LISTS VANTRY_ICON_SIZES)
    set(_png ${_out}/icons/${_size}/${VANTRY_APP_ID}.png)
    add_custom_command(OUTPUT ${_png}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${_out}/icons/${_size}
      COMMAND ${RSVG_CONVERT} -w ${_size} -h ${_size} -o ${_png} ${_src}/vantry.svg
      DEPENDS ${_src}/vantry.svg VERBATIM)
    list(APPEND _generated ${_png})
    install(FILES ${_png} DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${_size}x${_size}/apps)
  endforeach()
else()
  message(WARNING "rsvg-convert not found (Debian package librsvg2-bin): only the SVG icon is installed")
endif()
add_custom_target(vantry_packaging_files ALL DEPENDS ${_generated})

install(TARGETS vantry RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${_src}/sql_reserved_words.txt DESTINATION ${CMAKE_INSTALL_DATADIR}/vantry)
install(FILES ${_src}/${VANTRY_APP_ID}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${_out}/${VANTRY_APP_ID}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${_src}/vantry.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps
        RENAME ${VANTRY_APP_ID}.svg)
install(FILES ${_out}/vantry.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${_out}/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/vantry)
install(FILES ${_out}/changelog.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/vantry RENAME changelog.gz)

# ---- Debian package
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vantry)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The Vantry developers")
set(CPACK_PACKAGE_CONTACT "The Vantry developers <${VANTRY_CONTACT}>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "fast, light SQL client for many databases")
# CPack puts the summary first and indents these lines.
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Vantry is a desktop SQL client for developers and database administrators.
It keeps a catalogue of connections to SQLite, PostgreSQL, MySQL and
MariaDB, Firebird and ODBC databases, opens one per workspace tab, and lets
you browse tables, run statements and scripts, and see and edit the
results in a grid.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION database)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://vantry.dev/")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
# Libraries the program links are found by dpkg-shlibdeps. What it loads at run time is named by
# hand: the Qt SQL drivers and the unixODBC driver manager. The X11 platform plugin comes with
# Qt's GUI library; Wayland and SVG icon support are recommended.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS
  "libqt6sql6-sqlite, libqt6sql6-psql, libqt6sql6-mysql, libqt6sql6-odbc, libqt6sql6-ibase, libodbc2")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "odbcinst, fonts-dejavu-core, libqt6svg6, qt6-wayland")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "odbc-postgresql, odbc-mariadb, libsqliteodbc")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
