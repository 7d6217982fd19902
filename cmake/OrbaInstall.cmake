# The install tree: library, headers, CMake package (Orba::orba) and pkg-config file. Both
# descriptions find the prefix from where they lie, so an installed tree may be moved.
include(CMakePackageConfigHelpers)

set(ORBA_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Orba)
set(ORBA_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS orba EXPORT OrbaTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "orba*.h")

install(EXPORT OrbaTargets NAMESPACE Orba:: DESTINATION ${ORBA_PACKAGE_DIR})
configure_package_config_file(cmake/OrbaConfig.cmake.in ${PROJECT_BINARY_DIR}/OrbaConfig.cmake
  INSTALL_DESTINATION ${ORBA_PACKAGE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/OrbaConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/OrbaConfig.cmake ${PROJECT_BINARY_DIR}/OrbaConfigVersion.cmake
  DESTINATION ${ORBA_PACKAGE_DIR})

file(RELATIVE_PATH ORBA_PKGCONFIG_TO_PREFIX
  ${CMAKE_INSTALL_PREFIX}/${ORBA_PKGCONFIG_DIR} ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/orba.pc.in ${PROJECT_BINARY_DIR}/orba.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/orba.pc DESTINATION ${ORBA_PKGCONFIG_DIR})
