# Installs the system's own rooms so that another project can load them:
#
#   find_package(macsecd REQUIRED)
#   target_link_libraries(agent PRIVATE macsecd::engine)   # with #include "engine/..."
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/macsecd)

function(install_room name)
  install(TARGETS macsecd_${name} EXPORT macsecdTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
  file(GLOB headers CONFIGURE_DEPENDS ${name}/*.h)
  install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/macsecd/${name}
    COMPONENT development)
endfunction()

foreach(name IN LISTS own_rooms)
  install_room(${name})
endforeach()

install(EXPORT macsecdTargets NAMESPACE macsecd:: DESTINATION ${package_dir}
  COMPONENT development)
configure_package_config_file(cmake/macsecdConfig.cmake.in macsecdConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(macsecdConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/macsecdConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/macsecdConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)
