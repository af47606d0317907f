# What find_package(quaylink) reads: the targets quaylink::quaylink and quaylink::collection.
include(${CMAKE_CURRENT_LIST_DIR}/quaylinkTargets.cmake)
if(MSVC)
  # Microsoft's linker takes import libraries of its own, which lie beside the others.
  get_filename_component(quaylink_libraries ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
  set_target_properties(quaylink::quaylink PROPERTIES
                        IMPORTED_IMPLIB_RELEASE ${quaylink_libraries}/quaylink.lib)
  set_target_properties(quaylink::collection PROPERTIES
                        IMPORTED_IMPLIB_RELEASE ${quaylink_libraries}/quaylink-collection.lib)
  unset(quaylink_libraries)
endif()
