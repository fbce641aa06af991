# 32 bits.
set(machine armhf)
set(triple arm-linux-gnueabihf)
set(emulator arm)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
# That a former compiler passed some values otherwise is no news.
set(flags -Wno-psabi)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
