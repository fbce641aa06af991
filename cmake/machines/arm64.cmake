# 64 bits; a product and a sum can be one instruction.
set(machine arm64)
set(triple aarch64-linux-gnu)
set(emulator aarch64)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
