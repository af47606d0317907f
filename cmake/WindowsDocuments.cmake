# The documents of the zip for Windows that are made while building: README.txt and manual.html.
set(documents ${PROJECT_BINARY_DIR}/documents)
set(packages ${PROJECT_SOURCE_DIR}/cmake/packages)
configure_file(${packages}/README.txt.in ${documents}/README.txt @ONLY NEWLINE_STYLE DOS)
configure_file(${packages}/copyright.txt ${documents}/copyright.txt @ONLY NEWLINE_STYLE DOS)
install(FILES ${documents}/README.txt ${documents}/copyright.txt DESTINATION . COMPONENT program)
install(FILES ${PROJECT_SOURCE_DIR}/cli/completion/quaylink.ps1 DESTINATION completion COMPONENT program)

find_program(QUAYLINK_MANDOC mandoc DOC "Makes HTML of the manual page (package mandoc)")
if(NOT QUAYLINK_MANDOC)
  message(STATUS "The package will have no manual.html, because mandoc is missing")
  return()
endif()
set(manual ${documents}/manual.html)
set(manualPage ${PROJECT_SOURCE_DIR}/docs/quaylink.1)
add_custom_command(
  OUTPUT ${manual}
  COMMAND ${CMAKE_COMMAND} -D MANDOC=${QUAYLINK_MANDOC} -D PAGE=${manualPage} -D OUTPUT=${manual}
          -D VERSION=${PROJECT_VERSION} -D TEMPLATE=${packages}/manual.html.in -P ${packages}/make-manual.cmake
  DEPENDS ${manualPage} ${packages}/manual.html.in ${packages}/make-manual.cmake
  COMMENT "Making manual.html" VERBATIM)
add_custom_target(manual ALL DEPENDS ${manual})
install(FILES ${manual} DESTINATION . COMPONENT program)
