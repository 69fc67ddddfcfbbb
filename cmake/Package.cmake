# SPDX-License-Identifier: MIT

# Installation, package configuration for consumers (find_package and pkg-config), and CPack.
include(CMakePackageConfigHelpers)

install(TARGETS ${forms} EXPORT vekchTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/vekch DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
# The terms of the Unicode data ask to go with every copy of it.
install(FILES LICENSE NOTICE SECURITY.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
if(WIN32 AND VEKCH_SHARED)
  install(FILES ${moduleDefinition} DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()

set(configFolder ${CMAKE_INSTALL_LIBDIR}/cmake/vekch)
install(EXPORT vekchTargets NAMESPACE vekch:: DESTINATION ${configFolder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vekchConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES cmake/vekchConfig.cmake ${PROJECT_BINARY_DIR}/vekchConfigVersion.cmake
        DESTINATION ${configFolder})

# The folders of vekch.pc follow its position, so that an installation can be moved; a folder that was
# given with its whole path stays where it is, and so does all else if the library's was.
set(pkgConfigPrefix ${CMAKE_INSTALL_PREFIX})
if(NOT IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  file(RELATIVE_PATH toPrefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
  string(REGEX REPLACE "/$" "" toPrefix ${toPrefix})
  set(pkgConfigPrefix "\${pcfiledir}/${toPrefix}")
endif()
foreach(folder LIBDIR INCLUDEDIR)
  set(pkgConfig_${folder} ${CMAKE_INSTALL_${folder}})
  if(NOT IS_ABSOLUTE ${CMAKE_INSTALL_${folder}})
    set(pkgConfig_${folder} "\${prefix}/${CMAKE_INSTALL_${folder}}")
  endif()
endforeach()
if(NOT VEKCH_SHARED)
  set(pkgConfigFlags " -DVEKCH_STATIC")
endif()
configure_file(cmake/vekch.pc.in vekch.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vekch.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_VENDOR vekch)
set(CPACK_PACKAGE_CONTACT "the vekch authors <authors@vekch.invalid>")
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_RESOURCE_FILE_README ${PROJECT_SOURCE_DIR}/README.md)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
else()
  set(CPACK_GENERATOR TGZ)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
find_program(VEKCH_FILE file)
find_program(VEKCH_SHLIBDEPS dpkg-shlibdeps)
mark_as_advanced(VEKCH_FILE VEKCH_SHLIBDEPS)
if(VEKCH_FILE AND VEKCH_SHLIBDEPS)  # both are needed to find out what the programs depend on
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
endif()
set(CPACK_SOURCE_GENERATOR TGZ)
set(CPACK_SOURCE_PACKAGE_FILE_NAME vekch-${PROJECT_VERSION}-source)
set(CPACK_SOURCE_IGNORE_FILES "/[.]git(/|$)" "^${PROJECT_SOURCE_DIR}/build[-/]" /__pycache__/)
include(CPack)
