# What the machines have in common: Debian's cross compiler for `triple`, and the libraries that
# tests/machines/sysroot has laid into a folder of `machine`. What is built runs in an emulator.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${triple}-gcc)
set(CMAKE_CXX_COMPILER ${triple}-g++)

cmake_path(SET sysroot NORMALIZE ${CMAKE_CURRENT_LIST_DIR}/../../build/machines/${machine}/sysroot)
set(include ${sysroot}/usr/include)
set(CMAKE_CXX_FLAGS_INIT "${flags} -isystem ${include}/${triple} -isystem ${include}")
set(CMAKE_FIND_ROOT_PATH ${sysroot})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${emulator}-static -L ${sysroot})
