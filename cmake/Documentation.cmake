# The target `docs`: the reference of the public headers as HTML, in docs/html of the build folder. Needs Doxygen.
find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
  return()
endif()

set(DOXYGEN_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/docs)
set(DOXYGEN_STRIP_FROM_INC_PATH ${PROJECT_SOURCE_DIR}/include)
set(DOXYGEN_OPTIMIZE_OUTPUT_FOR_C YES)
set(DOXYGEN_QUIET YES)
set(DOXYGEN_WARN_NO_PARAMDOC YES)
set(DOXYGEN_WARN_AS_ERROR YES)
# The macros of the declarations say nothing to a reader.
set(DOXYGEN_MACRO_EXPANSION YES)
set(DOXYGEN_EXPAND_ONLY_PREDEF YES)
set(DOXYGEN_PREDEFINED QUAYLINK_EXPORT= QUAYLINK_CALL=)
doxygen_add_docs(docs include/quaylink COMMENT "Making the reference of the public headers")
if(QUAYLINK_TESTS AND NOT CMAKE_CROSSCOMPILING)
  add_test(NAME reference_builds_without_a_warning
           COMMAND ${CMAKE_COMMAND} --build ${PROJECT_BINARY_DIR} --target docs)
endif()
