# Run by CPack between installing the components and packing them: what Debian wants otherwise than other systems.
if(NOT CPACK_GENERATOR STREQUAL DEB)
  return()
endif()

# Compresses a file without a time in it.
function(compress file)
  execute_process(COMMAND gzip -9 -n ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(component ${CPACK_COMPONENTS_ALL})
  string(TOUPPER ${component} COMPONENT)
  set(package ${CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME})
  set(root ${CPACK_TEMPORARY_DIRECTORY}/${component})

  # The system's own folders are searched anyway.
  file(GLOB programs ${root}/usr/bin/*)
  foreach(program ${programs})
    file(RPATH_REMOVE FILE ${program})
  endforeach()

  # Its zsh looks for completions of packages in another place.
  set(zsh ${root}/usr/share/zsh)
  if(EXISTS ${zsh}/site-functions)
    file(RENAME ${zsh}/site-functions ${zsh}/vendor-completions)
  endif()

  file(GLOB manualPages ${root}/usr/share/man/*/*)
  foreach(page ${manualPages})
    compress(${page})
  endforeach()

  set(documents ${root}/usr/share/doc/${package})
  file(COPY_FILE ${CMAKE_CURRENT_LIST_DIR}/copyright.txt ${root}/copyright)
  file(MAKE_DIRECTORY ${documents})
  file(RENAME ${root}/copyright ${documents}/copyright)
  set(version ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
  string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
  file(WRITE ${documents}/changelog.Debian
       "quaylink (${version}) unstable; urgency=medium\n\n  * Made from the sources of version "
       "${CPACK_PACKAGE_VERSION}.\n\n -- ${CPACK_DEBIAN_PACKAGE_MAINTAINER}  ${now}\n")
  compress(${documents}/changelog.Debian)
endforeach()
