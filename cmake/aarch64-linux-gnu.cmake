# The build for 64-bit ARM Linux, by GNU's cross compiler.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

set(toolPrefix aarch64-linux-gnu)
set(CMAKE_C_COMPILER ${toolPrefix}-gcc)
set(CMAKE_CXX_COMPILER ${toolPrefix}-g++)

# Other libraries for it lie in the folder that scripts/arm-libraries has filled.
set(CMAKE_FIND_ROOT_PATH /usr/${toolPrefix} $ENV{QUAYLINK_ARM_LIBRARIES})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_EXE_LINKER_FLAGS_INIT -Wl,-rpath-link,$ENV{QUAYLINK_ARM_LIBRARIES}/lib/aarch64-linux-gnu)
