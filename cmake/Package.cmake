# Installs the programs with what a Debian machine expects around them, and describes the Debian
# package that packaging/build makes of everything installed.
set(packaging ${CMAKE_SOURCE_DIR}/packaging)

install(TARGETS macsecd DESTINATION ${CMAKE_INSTALL_SBINDIR} COMPONENT programs)
install(TARGETS macsecctl macsec-lab DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT programs)

# Debian keeps manual pages compressed.
find_program(GZIP gzip REQUIRED)
function(install_page name section)
  set(page ${CMAKE_BINARY_DIR}/packaging/${name}.${section}.gz)
  add_custom_command(OUTPUT ${page} DEPENDS ${packaging}/man/${name}.${section}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/packaging
    COMMAND ${GZIP} -9cn ${packaging}/man/${name}.${section} > ${page} VERBATIM)
  add_custom_target(page_${name} ALL DEPENDS ${page})
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT programs)
endfunction()
install_page(macsecd 8)
install_page(macsecctl 1)
install_page(macsec-lab 1)
install_page(macsecd.yaml 5)

install(FILES ${packaging}/macsecd.service DESTINATION lib/systemd/system COMPONENT programs)
# It holds keys.
install(FILES ${packaging}/macsecd.yaml DESTINATION /etc/macsecd
  PERMISSIONS OWNER_READ OWNER_WRITE COMPONENT programs)
foreach(program macsecd macsecctl macsec-lab)
  install(FILES ${packaging}/completion DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME ${program} COMPONENT programs)
endforeach()
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT programs)
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT programs)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "macsecd <root@localhost>" CACHE STRING "Who maintains the package")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "MACsec key agreement (IEEE 802.1X MKA) for Linux")
set(CPACK_PACKAGE_DESCRIPTION
  "macsecd agrees on MACsec keys with the neighbour on each link, installs them in the
kernel, renews them in time and tells why a link is or isn't secured. It uses the
cipher suites with extended packet numbers, GCM-AES-XPN-128 and GCM-AES-XPN-256.

The package holds the daemon, macsecctl to look at it, macsec-lab to play networks in
virtual time, and the rooms of the system as a library for other programs.")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR})
set(CPACK_STRIP_FILES TRUE)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ
  GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS passwd)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "systemd, iproute2")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "bash-completion, cmake, libssl-dev, tcpdump")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${packaging}/postinst ${packaging}/prerm
  ${packaging}/postrm ${packaging}/conffiles)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)
include(CPack)
