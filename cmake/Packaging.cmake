# What `cmake --install` and CPack hand to a host's developer: a zip for Windows, a tarball elsewhere.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
if(WIN32)
  set(CMAKE_INSTALL_DOCDIR doc)
endif()

install(TARGETS quaylink quaylink_collection EXPORT quaylinkTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(TARGET quaylink_cli)
  # Both where it is built and where it is installed: CMake would leave room in the path for changing it, and that room
  # is an empty entry, which means the current folder.
  set_target_properties(quaylink_cli PROPERTIES INSTALL_RPATH "$ORIGIN;$ORIGIN/../${CMAKE_INSTALL_LIBDIR}"
                                                BUILD_WITH_INSTALL_RPATH ON)
  install(TARGETS quaylink_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs ${PROJECT_SOURCE_DIR}/examples
        DESTINATION ${CMAKE_INSTALL_DOCDIR})

if(WIN32)
  if(MINGW)
    install(FILES ${PROJECT_BINARY_DIR}/quaylink.lib ${PROJECT_BINARY_DIR}/quaylink-collection.lib DESTINATION ${CMAKE_INSTALL_LIBDIR})
  endif()
  set(CPACK_GENERATOR ZIP)
  set(CPACK_SYSTEM_NAME windows-x86)
else()
  set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/quaylink)
  install(EXPORT quaylinkTargets NAMESPACE quaylink:: FILE quaylinkConfig.cmake
          DESTINATION ${packageFolder})
  write_basic_package_version_file(${PROJECT_BINARY_DIR}/quaylinkConfigVersion.cmake
                                   COMPATIBILITY SameMajorVersion)
  install(FILES ${PROJECT_BINARY_DIR}/quaylinkConfigVersion.cmake DESTINATION ${packageFolder})

  # Its paths are relative to the file itself, so that the tarball works wherever it is unpacked.
  file(RELATIVE_PATH prefixFromPkgConfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  foreach(library quaylink quaylink-collection)
    string(REPLACE - _ target ${library})
    get_target_property(description ${target} DESCRIPTION)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${PROJECT_BINARY_DIR}/${library}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  endforeach()

  set(CPACK_GENERATOR TGZ)
  string(TOLOWER ${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR} CPACK_SYSTEM_NAME)
endif()

set(CPACK_PACKAGE_NAME quaylink)
set(CPACK_PACKAGE_VENDOR Quaylink)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/package)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
