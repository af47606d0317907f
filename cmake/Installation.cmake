# What `cmake --install` puts where. Packages are made of three components: the program, the libraries, and what
# a host's developer needs, to which the sample devices belong.
include(CMakePackageConfigHelpers)
if(WIN32)
  # A zip stands alone in its folder: its documents lie at the top.
  set(CMAKE_INSTALL_DOCDIR .)
endif()

install(TARGETS quaylink quaylink_collection EXPORT quaylinkTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

# --- The program -------------------------------------------------------------------------------------------------

if(TARGET quaylink_cli)
  # Both where it is built and where it is installed: CMake would leave room in the path for changing it, and that room
  # is an empty entry, which means the current folder.
  cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_LIBDIR BASE_DIRECTORY $ORIGIN/.. OUTPUT_VARIABLE libraryFolder)
  set_target_properties(quaylink_cli PROPERTIES INSTALL_RPATH "$ORIGIN;${libraryFolder}" BUILD_WITH_INSTALL_RPATH ON)
  install(TARGETS quaylink_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
  if(NOT WIN32)
    install(FILES ${PROJECT_SOURCE_DIR}/docs/quaylink.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
    set(completion ${PROJECT_SOURCE_DIR}/cli/completion)
    install(FILES ${completion}/quaylink.bash RENAME quaylink COMPONENT program
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
    install(FILES ${completion}/_quaylink DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions COMPONENT program)
    install(FILES ${completion}/quaylink.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d
            COMPONENT program)
  endif()
endif()
if(TARGET quaylink-sample)
  install(TARGETS quaylink-sample RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT development)
  install(TARGETS stand_in_core_foundation stand_in_mobile_device
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/quaylink/stand-in-phone COMPONENT development)
  install(FILES ${PROJECT_SOURCE_DIR}/docs/quaylink-sample.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
          COMPONENT development)
endif()

# --- Documents ---------------------------------------------------------------------------------------------------

foreach(document host-guide events collection robustness)
  install(FILES ${PROJECT_SOURCE_DIR}/docs/${document}.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs
          COMPONENT development)
endforeach()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
if(WIN32)
  include(WindowsDocuments)
else()
  # The documents speak of ../include, which lies elsewhere here.
  cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_INCLUDEDIR BASE_DIRECTORY /prefix OUTPUT_VARIABLE headerFolder)
  cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_DOCDIR BASE_DIRECTORY /prefix OUTPUT_VARIABLE documentFolder)
  file(RELATIVE_PATH headersFromDocuments ${documentFolder} ${headerFolder})
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/documents)
  file(CREATE_LINK ${headersFromDocuments} ${PROJECT_BINARY_DIR}/documents/include SYMBOLIC)
  install(FILES ${PROJECT_BINARY_DIR}/documents/include DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
endif()

# --- For CMake and pkg-config ------------------------------------------------------------------------------------

set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/quaylink)
install(EXPORT quaylinkTargets NAMESPACE quaylink:: DESTINATION ${packageFolder} COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/quaylinkConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_SOURCE_DIR}/cmake/quaylinkConfig.cmake ${PROJECT_BINARY_DIR}/quaylinkConfigVersion.cmake
        DESTINATION ${packageFolder} COMPONENT development)
if(MINGW)
  install(FILES ${PROJECT_BINARY_DIR}/quaylink.lib ${PROJECT_BINARY_DIR}/quaylink-collection.lib
          DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
endif()
if(NOT WIN32)
  # Where the libraries lie below the prefix, the paths are relative to the file itself, so that the tarball works
  # wherever it is unpacked.
  if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    set(pkgConfigPrefix ${CMAKE_INSTALL_PREFIX})
  else()
    file(RELATIVE_PATH prefixFromPkgConfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
    string(REGEX REPLACE "/$" "" pkgConfigPrefix "\${pcfiledir}/${prefixFromPkgConfig}")
  endif()
  foreach(kind LIB INCLUDE)
    cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_${kind}DIR BASE_DIRECTORY "\${prefix}"
               OUTPUT_VARIABLE pkgConfig${kind}Folder)
  endforeach()
  foreach(library quaylink quaylink-collection)
    string(REPLACE - _ target ${library})
    get_target_property(description ${target} DESCRIPTION)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${PROJECT_BINARY_DIR}/${library}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
            COMPONENT development)
  endforeach()
endif()
