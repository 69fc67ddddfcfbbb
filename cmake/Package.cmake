# Installation, package configuration for consumers (find_package and pkg-config), and CPack.
include(CMakePackageConfigHelpers)

install(TARGETS vekch vekch_static EXPORT vekchTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/vekch DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
# The terms of the Unicode data ask to go with every copy of it.
install(FILES NOTICE DESTINATION ${CMAKE_INSTALL_DOCDIR})
if(WIN32)
  install(FILES ${moduleDefinition} DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()

install(EXPORT vekchTargets NAMESPACE vekch:: FILE vekchConfig.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vekch)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vekchConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vekchConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vekch)
file(RELATIVE_PATH pkgConfigToPrefix
     ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/vekch.pc.in vekch.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vekch.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(CPACK_PACKAGE_VENDOR vekch)
set(CPACK_PACKAGE_CHECKSUM SHA256)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
else()
  set(CPACK_GENERATOR TGZ)
endif()
include(CPack)
