# `cpack -G DEB`: quaylink, the program; libquaylink1, both libraries; libquaylink-dev, what a host's developer needs.
# What they need of Debian is found by dpkg-shlibdeps (package dpkg-dev).
set(QUAYLINK_MAINTAINER "Quaylink <maintainers@quaylink.invalid>" CACHE STRING "Who answers for Debian packages")

set(CPACK_DEB_COMPONENT_INSTALL ON)
# Each package has a first line of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${QUAYLINK_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    ${PROJECT_BINARY_DIR} ${PROJECT_BINARY_DIR}/samples/stand_in_phone/libraries)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

# Sets a component's package, with its section, its first line and what comes after that.
function(set_debian_package component name section summary description)
  string(TOUPPER ${component} COMPONENT)
  set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${COMPONENT}_DESCRIPTION "${summary}\n${description}" PARENT_SCOPE)
endfunction()

set_debian_package(program quaylink sound "takes the music off Apple players"
  "A command-line program that lists the tracks and playlists of an attached
player in disk mode, or of a copy of its music database, and copies the music
into tidy folders named after artists and albums.")
set_debian_package(library libquaylink1 libs "music of Apple players: the libraries"
  "Two libraries: one finds an attached player and copies its music database
and files, the other gives everything that such a database knows.")
set_debian_package(development libquaylink-dev libdevel "music of Apple players: for developers"
  "Headers, documents and examples for programs that use the libraries, and
quaylink-sample, which makes sample players and phones to try them with.")
foreach(component PROGRAM DEVELOPMENT)
  set(CPACK_DEBIAN_${component}_PACKAGE_DEPENDS "libquaylink1 (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
endforeach()

# What packages of others need when they use the libraries, and that the loader's cache is to be made anew.
set(control ${PROJECT_BINARY_DIR}/debian)
file(CONFIGURE OUTPUT ${control}/shlibs CONTENT
     "libquaylink 1 libquaylink1 (>= @PROJECT_VERSION@)\nlibquaylink-collection 1 libquaylink1 (>= @PROJECT_VERSION@)\n"
     @ONLY)
file(CONFIGURE OUTPUT ${control}/triggers CONTENT "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${control}/shlibs ${control}/triggers)

set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/packages/finish-debian-packages.cmake)
