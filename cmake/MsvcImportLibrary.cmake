# Makes LIBRARY.lib, the import library that Microsoft's linker takes, from the list of exports from which the DLL
# itself is linked. GNU's dlltool writes the older kind of archive, which Microsoft's linker is known to misread; LLVM's
# writes the kind that Microsoft's own tools write.
find_program(LLVM_DLLTOOL NAMES llvm-dlltool llvm-dlltool-19 llvm-dlltool-16 llvm-dlltool-14
             DOC "LLVM's dlltool (package llvm)" REQUIRED)

function(add_msvc_import_library library exportsList)
  set(importLibrary ${PROJECT_BINARY_DIR}/${library}.lib)
  add_custom_command(
    OUTPUT ${importLibrary}
    COMMAND ${LLVM_DLLTOOL} -m i386 -d ${exportsList} -D ${library}.dll -l ${importLibrary}
    DEPENDS ${exportsList}
    COMMENT "Making ${library}.lib" VERBATIM)
  add_custom_target(${library}_msvc_import_library ALL DEPENDS ${importLibrary})
endfunction()
