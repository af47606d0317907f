# The 32-bit Windows build, by MinGW-w64 with its posix threads and everything of the compiler's linked statically, so
# that a DLL or a program needs nothing but what Windows brings along.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)

set(toolPrefix i686-w64-mingw32)
set(CMAKE_C_COMPILER ${toolPrefix}-gcc-posix)
set(CMAKE_CXX_COMPILER ${toolPrefix}-g++-posix)
set(CMAKE_RC_COMPILER ${toolPrefix}-windres)

# The sources ask the headers for nothing newer than Windows XP.
set(CMAKE_C_FLAGS_INIT "-D_WIN32_WINNT=0x0501 -DWINVER=0x0501")
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_C_FLAGS_INIT}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static")

set(CMAKE_FIND_ROOT_PATH /usr/${toolPrefix})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
