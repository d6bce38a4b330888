# The unit's udev rule, the man page of zenta, and the Debian package of
# both programs (cpack -G DEB in the build folder). Configure the package's
# build with -DCMAKE_INSTALL_PREFIX=/usr: the programs look for their data
# folder where the build was told it would be.

# udev reads /usr/lib/udev/rules.d and /etc/udev/rules.d only; an install
# under /usr/local wants -DZENTA_UDEV_RULES_DIR=/etc/udev/rules.d.
set(ZENTA_UDEV_RULES_DIR "lib/udev/rules.d" CACHE STRING
  "Folder of the unit's udev rule; a relative one is under the install prefix")
install(FILES ${CMAKE_SOURCE_DIR}/data/60-zenta.rules DESTINATION ${ZENTA_UDEV_RULES_DIR})

# Man pages go compressed, as Debian's man expects them.
find_program(GZIP_PROGRAM gzip)
if(GZIP_PROGRAM)
  add_custom_command(OUTPUT ${CMAKE_BINARY_DIR}/zenta.1.gz
    COMMAND ${GZIP_PROGRAM} -9n -c ${CMAKE_SOURCE_DIR}/packaging/zenta.1 > ${CMAKE_BINARY_DIR}/zenta.1.gz
    DEPENDS ${CMAKE_SOURCE_DIR}/packaging/zenta.1 VERBATIM)
  add_custom_target(zenta_man ALL DEPENDS ${CMAKE_BINARY_DIR}/zenta.1.gz)
  install(FILES ${CMAKE_BINARY_DIR}/zenta.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
else()
  install(FILES ${CMAKE_SOURCE_DIR}/packaging/zenta.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zenta)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "ZENTA")
set(CPACK_PACKAGE_CONTACT "ZENTA developers <zenta@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
  "control panel and command line for the ZENTA USB programmer of flash PIC16/PIC12 chips")
set(CPACK_PACKAGE_DESCRIPTION
  "zenta-panel and zenta program, verify, read and erase flash PIC16 and PIC12 chips\n\
with the ZENTA USB programmer unit, run the assembler on the source file, and\n\
turn the unit into a logic view, volt meter, frequency and event counter.\n\
A udev rule lets the user at the seat use the unit without root.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
# The libraries the programs link (Qt, libusb, the C++ runtime), as
# dpkg-shlibdeps finds them, so apt pulls them in.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "udev")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "gputils")
# A unit plugged in before the install gets its access at once.
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_SOURCE_DIR}/packaging/postinst)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
