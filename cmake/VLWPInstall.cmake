# Installs the layer libraries, their headers and a CMake package config, so a
# host can say find_package(VLWP) and link VLWP::vlwp.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS vlwp ${VLWP_LAYER_TARGETS} vl_warnings
        EXPORT VLWPTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vlwp)
install(DIRECTORY src/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vlwp
        FILES_MATCHING PATTERN "*.h")
install(EXPORT VLWPTargets NAMESPACE VLWP:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/VLWP)
configure_package_config_file(cmake/VLWPConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/VLWPConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/VLWP)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/VLWPConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/VLWPConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/VLWPConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/VLWP)
